#include <gtest/gtest.h>

#include <QGuiApplication>

#include <memory>

namespace {

/// The one application object that Qt wants, for every test of the program, without a display.
class StudioApplication : public testing::Environment {
    void SetUp() override {
        // Some faults of Qt show on a real display only: TAVARO_PLATFORM=xcb.
        qputenv("QT_QPA_PLATFORM", qEnvironmentVariable("TAVARO_PLATFORM", "offscreen").toUtf8());
        application_ = std::make_unique<QGuiApplication>(count_, arguments_);
    }
    void TearDown() override { application_.reset(); }

    int count_ = 1;
    char name_[12] = "StudioTests";
    char* arguments_[2] = {name_, nullptr};
    std::unique_ptr<QGuiApplication> application_;
};

[[maybe_unused]] auto* const registered = testing::AddGlobalTestEnvironment(new StudioApplication);

}
