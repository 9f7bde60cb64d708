#include <Tavaro/Agents/Private/FilmTools.h>

#include <Tavaro/Agents/Private/ExportArguments.h>
#include <Tavaro/Agents/Private/ExportPaths.h>
#include <Tavaro/Agents/Private/RecordObject.h>
#include <Tavaro/Model/Application/Application.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroMCP/Protocol/MCPSession.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

void FilmTools::listExportPresets(RunningCall& call) {
    JSONValue::Array presets;
    for (auto const& preset : ExportPreset::all()) presets.push_back(objectOf(preset));
    auto const summary = fmt::format("{} export presets", presets.size());
    call.finish(toolResult::ok(summary, JSONValue::Object{{"presets", std::move(presets)}}));
}

void FilmTools::renderFrame(RunningCall& call, OpenProjects::Opened const& project) {
    constexpr std::int64_t usualSide = 1280;
    constexpr std::size_t textAround = 1U << 16;
    project->refresh();
    double const time = call.arguments().requiredNumber("time");
    if (!(time >= 0 && time <= project->document().presentationDuration()))
        refuseArguments("time must be inside the video.");
    auto const side = call.arguments().integer("max_width", {64, 3840}).value_or(usualSide);
    auto interest = application_.frames().draw(
        {.package = project->package(),
         .project = project->document(),
         .at = time,
         .longestSide = side,
         .mostBytes = (MCPSession::longestResult - textAround) / 4 * 3},
        call.later([time](RunningCall& here, Outcome<DrawnFrame> const& drawn) {
            auto const& frame = drawn.value();
            auto const* const reduced = frame.isReduced ? " Drawn smaller than asked: it would be too large." : "";
            here.finish(toolResult::image(
                Data{{frame.png.begin(), frame.png.end()}},
                fmt::format("The video at {:g} s, {} × {} pixels.{}", time, frame.width, frame.height, reduced)));
        }));
    call.keep(std::move(interest));
    call.whenAbandoned([&call] { call.finish(toolResult::failure(MCPErrorCode::interrupted, "Dropped.")); });
}

void FilmTools::exportFilm(RunningCall& call, OpenProjects::Opened const& project) {
    auto& exporter = application_.exporter();
    project->refresh();
    auto choices = exportChoices(call.arguments());
    if (exporter.isExporting())
        throw MCPToolError(MCPErrorCode::busy, "Another export is running. Wait for it to finish.");
    if (choices.output) choices.output = exportPaths::given(*choices.output).string();
    try {
        auto const settings = settingsFor(choices, project->document());
        if (!choices.output) choices.output = exportPaths::usual(project->document(), settings).string();
        if (!choices.container) choices.container = settings.container;
    } catch (MCPToolError const&) {
        throw;
    } catch (Error const& error) {
        refuseArguments(error.what());
    }
    auto const remarks = std::make_shared<std::string>();
    exporter.start({.package = project->package(), .project = project->document(), .choices = choices},
                   {.remark = [remarks](std::string const& remark) { *remarks += " " + remark; },
                    .over = call.later([remarks](RunningCall& here, ExportOutcome const& outcome) {
                        auto const& film = outcome.value();
                        here.finish(toolResult::ok(fmt::format("Exported to {}.{}", film.path, *remarks),
                                                   JSONText::written(encodeJSON(film))));
                    })});
    auto const tell = call.later([](RunningCall& here, std::optional<RunningExport> const& running) {
        if (running) here.progress(running->share, "Exporting");
    });
    call.keep(std::make_shared<ExportController::Observation>(exporter.observe(tell)));
}

}
