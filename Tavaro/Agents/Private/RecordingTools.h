#pragma once

#include <Tavaro/Agents/Private/RecordRequest.h>
#include <Tavaro/Agents/Private/RunningCall.h>

#include <functional>

namespace tavaro {

class Application;

/// The tools that record.
class RecordingTools {
public:
    explicit RecordingTools(Application& application) : application_(application) {}

    void listSources(RunningCall& call);
    void start(RunningCall& call);
    /// One whose result nobody waits for any more is ended, and saved as far as it is.
    void recordFor(RunningCall& call);
    void stop(RunningCall& call);
    void pause(RunningCall& call);
    void resume(RunningCall& call);
    void cancel(RunningCall& call);

private:
    void record(RunningCall& call, RecordRequest const& request, std::function<void()> begun);

    Application& application_;
};

}
