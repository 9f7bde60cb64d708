#pragma once

#include <TavaroCapture/Segments/TakeStream.h>
#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Recording/RecordingMetadata.h>

#include <filesystem>
#include <string>
#include <vector>

namespace tavaro {

/// A movie in a take's working folder, ready to become a project.
struct TakeMovie {
    std::filesystem::path movie;
    RecordingMetadata metadata;
    double duration = 0;
    std::vector<TakeStream> streams = {};   // beside the movie
    std::vector<std::string> warnings = {}; // sentences to show
};

enum class FirstEdit { polished, raw };
enum class TakeOutput { lines, json };

/// Makes a project of the take, polishes it where asked, removes the working folder, and tells what was done: the
/// summary lines and the project's path on standard output, or one JSON object. When the project cannot be written the
/// take is kept as an unfinished recording, and the failure says so.
void saveTake(TakeMovie const& take, std::filesystem::path const& package, DemoMode mode, FirstEdit edit,
              TakeOutput output);

}
