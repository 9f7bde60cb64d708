#pragma once

#include <TavaroCore/Records/Fields.h>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

struct SourceList;

/// Pixels of the desktop.
struct ListedFrame {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    static constexpr auto fields = std::tuple{
        field("x", &ListedFrame::x),
        field("y", &ListedFrame::y),
        field("width", &ListedFrame::width),
        field("height", &ListedFrame::height),
    };
    bool operator==(ListedFrame const&) const = default;
};
static_assert(listsEveryField<ListedFrame>);

struct ListedDisplay {
    std::string id;
    std::string name;
    ListedFrame frame;
    bool isMain = false;

    static constexpr auto fields = std::tuple{
        field("id", &ListedDisplay::id),
        field("name", &ListedDisplay::name),
        field("frame", &ListedDisplay::frame),
        field("isMain", &ListedDisplay::isMain),
    };
    bool operator==(ListedDisplay const&) const = default;
};
static_assert(listsEveryField<ListedDisplay>);

struct ListedWindow {
    std::string id;
    std::string application;
    std::string bundleID;
    std::string title;
    ListedFrame frame;
    bool isMinimized = false;

    static constexpr auto fields = std::tuple{
        field("id", &ListedWindow::id),
        field("application", &ListedWindow::application),
        field("bundleID", &ListedWindow::bundleID),
        field("title", &ListedWindow::title),
        field("frame", &ListedWindow::frame),
        field("isMinimized", &ListedWindow::isMinimized),
    };
    bool operator==(ListedWindow const&) const = default;
};
static_assert(listsEveryField<ListedWindow>);

struct ListedMicrophone {
    std::string id;
    std::string name;
    bool isDefault = false;

    static constexpr auto fields = std::tuple{
        field("id", &ListedMicrophone::id),
        field("name", &ListedMicrophone::name),
        field("isDefault", &ListedMicrophone::isDefault),
    };
    bool operator==(ListedMicrophone const&) const = default;
};
static_assert(listsEveryField<ListedMicrophone>);

struct ListedCamera {
    std::string id;
    std::string name;
    bool isDefault = false;

    static constexpr auto fields = std::tuple{
        field("id", &ListedCamera::id),
        field("name", &ListedCamera::name),
        field("isDefault", &ListedCamera::isDefault),
    };
    bool operator==(ListedCamera const&) const = default;
};
static_assert(listsEveryField<ListedCamera>);

struct ListedSystemAudio {
    std::string name;
    std::vector<std::string> applications; // that play something now

    static constexpr auto fields =
        std::tuple{field("name", &ListedSystemAudio::name), field("applications", &ListedSystemAudio::applications)};
    bool operator==(ListedSystemAudio const&) const = default;
};
static_assert(listsEveryField<ListedSystemAudio>);

/// What can be recorded, by the ids that recordings take.
struct SourceListing {
    std::vector<ListedDisplay> displays;
    std::vector<ListedWindow> windows; // frontmost first
    std::vector<ListedCamera> cameras;
    std::vector<ListedMicrophone> microphones;
    std::optional<ListedSystemAudio> systemAudio; // none: nothing plays sound
    std::vector<std::string> limits;              // sentences: what the desktop cannot give

    static constexpr auto fields = std::tuple{
        field("displays", &SourceListing::displays),       field("windows", &SourceListing::windows),
        field("cameras", &SourceListing::cameras),         field("microphones", &SourceListing::microphones),
        field("systemAudio", &SourceListing::systemAudio), field("limits", &SourceListing::limits),
    };
    bool operator==(SourceListing const&) const = default;
};
static_assert(listsEveryField<SourceListing>);

SourceListing listingOf(SourceList const& sources);

}
