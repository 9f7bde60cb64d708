#pragma once

#include <Tavaro/Model/Making/MadeProject.h>

#include <TavaroCapture/Segments/TakeStream.h>
#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Recording/RecordingMetadata.h>
#include <TavaroCore/Records/UUID.h>

#include <filesystem>
#include <functional>
#include <optional>
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
/// What becomes of a name that something else has by the time the project is made.
enum class NameTaken { fails, isNumbered };

/// The project that a take is to become.
struct TakeProject {
    std::filesystem::path package; // empty: the folder of unsaved projects, under a name that tells when
    DemoMode mode = DemoMode::website;
    FirstEdit firstEdit = FirstEdit::polished;
    NameTaken nameTaken = NameTaken::fails; // isNumbered: "NAME 2.recproj", or the first that is free
    bool isScanDue = false;                 // for private text; also where the take's working folder notes it
};

struct MadeTake {
    UUID id; // of the project
    MadeProject made;
    std::string health;                         // how well the capture went, in a line
    std::optional<std::string> endedEarly = {}; // why the take ended by itself, as a sentence
};

/// Makes a project of the take, polishes it where asked, gives it its thumbnail and removes the working folder. When
/// the project cannot be written the take is kept as an unfinished recording, and the failure says so. `remark` is told
/// in a sentence what went wrong beside that.
MadeTake makeTakeProject(TakeMovie const& take, TakeProject const& wanted,
                         std::function<void(std::string const&)> const& remark);

}
