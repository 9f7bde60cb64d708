#include <Tavaro/Model/Application/Application.h>

#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Recording/TakeNames.h>

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCore/Export/ExportFile.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <ctime>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

ApplicationPlaces ApplicationPlaces::usual() {
    return {.library = {folders::movies() / "Tavaro", folders::unsavedProjects()},
            .index = folders::caches() / "library.json",
            .preferences = Preferences::usualFile()};
}

Application::Application(MainQueue& queue, ApplicationPlaces places)
    : places_(std::move(places))
    , preferences_(places_.preferences)
    , catalogue_(queue, places_.library, places_.index)
    , projects_(queue)
    , recorder_(queue)
    , exporter_(queue)
    , frames_(queue)
    , thumbnails_(queue)
    , newTakes_(queue, projects_, catalogue_)
    , recording_(recorder_.observe([this](RecorderState const& state) {
        newTakes_.hold(state.phase != RecorderPhase::idle); // or frames are lost
    }))
    , side_(queue, "com.tavaro.sources") {
    projects_.onOpened([this](OpenProjects::Opened const& project) { thumbnails_.watch(project); });
}

void Application::sources(std::function<void(Outcome<SourceList> const&)> answer) {
    side_.ask([] { return listSources(); }, std::move(answer));
}

void Application::project(UUID const& id, std::function<void(Outcome<OpenProjects::Opened> const&)> answer) {
    if (auto const open = projects_.find(id)) return answer(open);
    catalogue_.find(id, [this, answer = std::move(answer)](Outcome<LibraryItem> const& found) {
        if (auto const& failure = found.failure()) return answer(failure);
        projects_.open(found.value().path, answer);
    });
}

fs::path Application::newProject(std::string_view name) const {
    return unusedFile(places_.library.front() / fmt::format("{}{}", name, ProjectPackage::directoryExtension));
}

void Application::record(RecordingRequest request, RecordingHandlers handlers) {
    if (request.project.package.empty()) request.project.package = newProject(recordingName(std::time(nullptr)));
    request.project.isScanDue = preferences_.get(newTakesScanned);
    handlers.over = [this, over = std::move(handlers.over)](RecordingOutcome const& outcome) {
        if (outcome.made) newTakes_.add(outcome.made->made.path);
        if (over) over(outcome);
    };
    recorder_.start(std::move(request), std::move(handlers));
}

TakeProject Application::recovered(std::string_view name) {
    return {.package = newProject(name),
            .nameTaken = NameTaken::isNumbered,
            .isScanDue = preferences_.get(newTakesScanned)};
}

void Application::end() {
    newTakes_.end();
    exporter_.cancel();
    thumbnails_.hurry();
    if (recorder_.isTaking()) recorder_.stop();
    if (recorder_.state().phase == RecorderPhase::countdown) recorder_.cancel();
}

}
