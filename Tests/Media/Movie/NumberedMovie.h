#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Frames/VideoFrame.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroMedia/Movie/MovieWriter.h>

namespace tavaro {

/// A picture that carries a number: a row of sixteen black and white blocks above a pattern like lines of text that
/// wanders with the number.
Image numberedImage(int width, int height, int number);
/// −1 where the blocks cannot be told apart.
int numberOf(ImageView image);
int numberOf(VideoFrame const& frame);
/// The number on show at that time.
int numberAt(MovieReader& reader, double seconds);

/// Small settings for movies of a test: 320 × 180, H.264 in MP4, 30 frames a second, a key frame every 15.
MovieWriterSettings smallMovie();

/// Numbers from `firstNumber` on, one at each of `times`.
void writeNumbered(std::filesystem::path const& file, MovieWriterSettings const& settings,
                   std::vector<double> const& times, int firstNumber = 0);
std::vector<double> steadyTimes(int count, int fps);

/// Runs the `ffmpeg` program with a line of arguments; false where there is none, or it fails.
bool runFFmpeg(std::string const& arguments);
/// What the `ffprobe` program says about the pictures' stream, `key=value` lines.
std::string probed(std::filesystem::path const& file, std::string const& entries);

std::string bytesOf(std::filesystem::path const& file);
void writeBytes(std::filesystem::path const& file, std::string_view bytes);

}
