#include <Tavaro/Commands/Command.h>

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCore/Records/JSONWriter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

void writeFrame(JSONWriter& writer, PixelRect const& frame) {
    writer.key("frame");
    writer.beginObject();
    for (auto const& [name, value] : {std::pair{"height", frame.height}, std::pair{"width", frame.width},
                                      std::pair{"x", frame.x}, std::pair{"y", frame.y}}) {
        writer.key(name);
        writer.integer(value);
    }
    writer.endObject();
}

void writeText(JSONWriter& writer, std::string_view key, std::string_view text) {
    writer.key(key);
    writer.string(text);
}

std::string toJSON(SourceList const& list) {
    JSONWriter writer;
    writer.beginObject();
    writer.key("displays");
    writer.beginArray();
    for (auto const& display : list.displays) {
        writer.beginObject();
        writeFrame(writer, display.frame);
        writeText(writer, "id", display.id);
        writer.key("isMain");
        writer.boolean(display.isMain);
        writeText(writer, "name", display.name);
        writer.endObject();
    }
    writer.endArray();
    writer.key("windows");
    writer.beginArray();
    for (auto const& window : list.windows) {
        writer.beginObject();
        writeText(writer, "application", window.application);
        writeText(writer, "bundleID", window.bundleID);
        writeFrame(writer, window.frame);
        writeText(writer, "id", window.id());
        writer.key("isMinimized");
        writer.boolean(window.isMinimized);
        writeText(writer, "title", window.title);
        writer.endObject();
    }
    writer.endArray();
    writer.endObject();
    return writer.take();
}

std::string place(PixelRect const& frame) {
    return fmt::format("{}×{} at {},{}", frame.width, frame.height, frame.x, frame.y);
}

void print(SourceList const& list) {
    for (auto const& display : list.displays) {
        fmt::print("{:<16} {:<24} {}{}\n", display.id, place(display.frame), display.name,
                   display.isMain ? " (main)" : "");
    }
    for (auto const& window : list.windows) {
        fmt::print("{:<16} {:<24} {}: {}{}\n", window.id(), place(window.frame), window.application, window.title,
                   window.isMinimized ? " (minimised)" : "");
    }
}

}

void addSources(CLI::App& app) {
    auto asJSON = std::make_shared<bool>(false);
    auto* command = app.add_subcommand("sources", "Lists the displays and windows that can be recorded");
    command->add_flag("--json", *asJSON, "print them as JSON");
    command->callback([asJSON] {
        auto const list = listSources();
        if (*asJSON)
            fmt::print("{}\n", toJSON(list));
        else
            print(list);
    });
}

}
