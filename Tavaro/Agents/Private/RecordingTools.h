#pragma once

#include <Tavaro/Agents/Private/RecordRequest.h>
#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Recording/RecordingController.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class Application;
class SecretTools;

/// The tools that record.
class RecordingTools {
public:
    RecordingTools(Application& application, SecretTools& secrets) : application_(application), secrets_(secrets) {}

    void listSources(RunningCall& call);
    void start(RunningCall& call);
    /// One whose result nobody waits for any more is ended, and saved as far as it is.
    void recordFor(RunningCall& call);
    void stop(RunningCall& call);
    void pause(RunningCall& call);
    void resume(RunningCall& call);
    void cancel(RunningCall& call);

    /// What came of a recording that ended without anybody being told of it, for the next `stop`; none after that, and
    /// after the next start.
    std::optional<JSONValue::Object> untold() const;

private:
    /// A recording that an agent asked for.
    struct Take {
        RecordRequest request;
        std::vector<std::string> remarks; // so far, as sentences
        bool isOver = false;
        std::optional<RecordingOutcome> untold;
    };

    /// `begun` gets the remarks so far.
    void record(RunningCall& call, RecordRequest const& request, std::function<void(std::vector<std::string>)> begun);
    std::shared_ptr<Take> present() const;
    void tell(RunningCall& call, Take& take, RecordingOutcome const& outcome);

    Application& application_;
    SecretTools& secrets_;
    std::shared_ptr<Take> take_ = std::make_shared<Take>(); // the last; before the first, one of nothing
};

}
