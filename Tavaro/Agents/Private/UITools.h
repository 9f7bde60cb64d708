#pragma once

#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroMCP/Protocol/ToolResult.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <string>

namespace tavaro {

class UIAutomation;

/// The tools that look at other applications and work them. They act one after the other on a thread of their own, for
/// there is one pointer. A call that nobody waits for any more stops, also in the middle of a glide.
class UITools {
public:
    /// On the X server `display`; empty means `$DISPLAY`.
    explicit UITools(MainQueue& queue, std::string display = {});
    /// Stops what is under way.
    ~UITools();
    UITools(UITools const&) = delete;
    UITools& operator=(UITools const&) = delete;

    void openApp(RunningCall& call);
    void elements(RunningCall& call);
    void click(RunningCall& call);
    void scroll(RunningCall& call);
    void keys(RunningCall& call);
    void screenshot(RunningCall& call);

private:
    using Work = std::function<ToolResult(UIAutomation&, std::stop_token const&)>;

    void perform(RunningCall& call, Work work);
    ToolResult worked(Work const& work, std::stop_source& stop);

    std::string const display_;
    std::stop_source stop_;                    // of all calls
    std::unique_ptr<UIAutomation> automation_; // of the thread below; made by its first call
    SideQueue side_;
};

}
