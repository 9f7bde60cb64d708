#pragma once

#include <cstdint>
#include <string>

/// The text form of times shown to the user, and steps along the frame grid.
namespace tavaro::Timecode {

enum class Fraction { none, hundredths, frames };

/// "1:05", "1:02:05", "1:02:05.50"; negative and non-finite times give "0:00". `fps` matters for frames only.
std::string format(double seconds, Fraction fraction = Fraction::none, double fps = 60);

/// Moves a playhead by n frames on the frame grid of an edit of that duration; never before 0 and never past the last
/// whole frame before the end.
double stepped(double from, std::int64_t frames, double fps, double duration);

}
