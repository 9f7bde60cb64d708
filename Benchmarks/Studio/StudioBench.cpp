#include <Benchmarks/Studio/DeskBench.h>
#include <Benchmarks/Studio/PreviewBench.h>
#include <Benchmarks/Studio/ProgramBench.h>
#include <Benchmarks/Studio/TimelineBench.h>
#include <Benchmarks/Studio/TranscriptBench.h>

#include <QGuiApplication>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>
#include <vector>

/// With names given, these parts alone.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication const application(argc, argv);
    std::vector<std::string_view> const wanted(argv + 1, argv + argc);
    for (auto const& [name, bench] : {std::pair{"preview", &tavaro::benchPreview},
                                      {"timeline", &tavaro::benchTimeline},
                                      {"desk", &tavaro::benchDesk},
                                      {"transcript", &tavaro::benchTranscript},
                                      {"program", &tavaro::benchProgram}}) {
        if (wanted.empty() || std::ranges::find(wanted, name) != wanted.end()) bench();
    }
}
