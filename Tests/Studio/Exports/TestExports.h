#pragma once

#include "../../Core/Package/TemporaryFolder.h"
#include "../../Render/Export/TestTake.h"
#include "../Editor/TestEditor.h"

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Studio/Exports/ExportQueue.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace tavaro {

inline std::string bytesIn(std::filesystem::path const& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

/// An application of one test, with a take of one second that is saved as a project.
class ExportsTest : public testing::Test {
protected:
    ExportsTest() {
        take.project.id = UUID::random();
        take.project.name = "Tour";
        take.package.save(take.project);
    }

    ExportQueue::Settings settings() const {
        return {.memory = folder / "exports.json", .tick = 20, .encoder = EncoderChoice::software};
    }
    ExportOrder order(std::string const& name, Size2 size = {160, 90}) const {
        return {.package = take.package,
                .document = take.project,
                .choices = {.size = size, .output = take.output(name).string()},
                .title = name};
    }
    /// What `tavaro export` writes for the same.
    std::string exported(ExportOrder const& order) {
        auto choices = order.choices;
        choices.output = (folder / "expected.mp4").string();
        auto job = exportJob(queue, {order.package, order.document, choices, EncoderChoice::software});
        job.start();
        auto const bytes = bytesIn(job.wait().path);
        std::filesystem::remove(folder / "expected.mp4");
        return bytes;
    }
    template<class IsSo> static void waitFor(IsSo isSo) { TestEditor::waitFor(isSo); }
    /// "first.mp4 done, second.mp4 cancelled"
    static std::string listed(ExportQueue const& exports) {
        std::string text;
        for (int row = 0; row < exports.count(); ++row) {
            auto const& record = exports.record(row);
            text += (text.empty() ? "" : ", ") + record.title + " " + std::string(nameOf(record.state));
        }
        return text;
    }

    TestTake take{"studio-exports", 30};
    TemporaryFolder const folder;
    MainQueue queue;
    QueueInLoop const loop{queue};
    Application application{
        queue,
        {.library = {folder / "Movies"}, .index = folder / "library.json", .preferences = folder / "preferences.json"}};
};

}
