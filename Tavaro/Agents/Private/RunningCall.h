#pragma once

#include <Tavaro/Agents/Private/ToolArguments.h>

#include <TavaroCore/Records/JSONValue.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace tavaro {

/// A call of a tool, with the ways back to whoever made it.
struct ToolCall {
    std::string tool;
    JSONValue::Object arguments;
    std::string client;
    std::function<void(double fraction, std::string const& message)> progress;
    std::function<void(ToolResult const& result)> finish; // once
};

/// A call that is being performed. It belongs to the main queue, and to the handler, which lets go of it once it is
/// over.
class RunningCall : public std::enable_shared_from_this<RunningCall> {
public:
    /// `over` comes after the result.
    RunningCall(ToolCall call, std::function<void(RunningCall&)> over)
        : call_(std::move(call))
        , over_(std::move(over)) {}

    std::string const& tool() const { return call_.tool; }
    ToolArguments arguments() const { return ToolArguments(call_.arguments); }
    /// Who made it, as short as steps and sentences need it.
    std::string client() const;

    void progress(double fraction, std::string const& message) const { call_.progress(fraction, message); }
    /// The first result counts.
    void finish(ToolResult const& result);
    bool isOver() const { return isOver_; }

    /// Runs the work; what it throws becomes the result.
    template<class Work> void attempt(Work const& work) {
        try {
            work();
        } catch (...) {
            fail();
        }
    }
    /// For answers that come later: does `work(call, answers…)`, or nothing once the call is over or the handler gone.
    template<class Work> auto later(Work work) {
        return [waiting = weak_from_this(), work = std::move(work)](auto const&... answers) {
            auto const call = waiting.lock();
            if (call && !call->isOver()) call->attempt([&] { work(*call, answers...); });
        };
    }

    /// What the call waits for, until it is over.
    void keep(std::shared_ptr<void const> needed) { kept_ = std::move(needed); }
    /// What happens when nobody waits for the result any more, at once where that is so already; otherwise the call
    /// goes on.
    void whenAbandoned(std::function<void()> act);
    void abandon();
    bool isAbandoned() const { return isAbandoned_; }

private:
    void fail();

    ToolCall call_;
    std::function<void(RunningCall&)> over_;
    std::shared_ptr<void const> kept_;
    std::function<void()> abandoned_;
    bool isAbandoned_ = false;
    bool isOver_ = false;
};

}
