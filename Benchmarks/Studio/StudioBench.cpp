#include <Benchmarks/Studio/PreviewBench.h>
#include <Benchmarks/Studio/TimelineBench.h>

#include <QGuiApplication>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication const application(argc, argv);
    tavaro::benchPreview();
    tavaro::benchTimeline();
}
