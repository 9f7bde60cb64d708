// What pictures and films hold, by programs that know nothing of Tavaro.

/** Width, height and the mean and spread of the brightness of a PNG. */
export async function pictureIn(stage, file) {
    const { streams } = await probed(stage, file);
    const pixels = await stage.run("ffmpeg", ["-v", "error", "-i", file, "-f", "rawvideo", "-pix_fmt", "gray", "-"], {
        binary: true,
    });
    if (pixels.code !== 0) throw new Error(`${file} cannot be decoded: ${pixels.words}`);
    const values = pixels.output;
    const mean = values.reduce((sum, value) => sum + value, 0) / values.length;
    const variance = values.reduce((sum, value) => sum + (value - mean) ** 2, 0) / values.length;
    return {
        codec: streams[0].codec_name,
        width: streams[0].width,
        height: streams[0].height,
        mean,
        spread: Math.sqrt(variance),
    };
}

/** What a film is, each frame of it decoded. */
export async function filmIn(stage, file) {
    const { streams, format } = await probed(stage, file);
    const video = streams.find((stream) => stream.codec_type === "video");
    const decoded = await stage.run("ffmpeg", ["-v", "error", "-xerror", "-i", file, "-f", "null", "-"]);
    if (decoded.code !== 0 || decoded.words) throw new Error(`${file} does not play: ${decoded.words}`);
    return {
        codec: video.codec_name,
        width: video.width,
        height: video.height,
        frames: Number(video.nb_read_frames),
        duration: Number(format.duration),
    };
}

async function probed(stage, file) {
    const found = await stage.run("ffprobe", [
        "-v",
        "error",
        "-count_frames",
        "-show_streams",
        "-show_format",
        "-of",
        "json",
        file,
    ]);
    if (found.code !== 0) throw new Error(`${file} cannot be read: ${found.words}`);
    return JSON.parse(found.output);
}
