#pragma once

#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <filesystem>
#include <functional>
#include <string>

namespace tavaro::commands {

/// Runs the scan with a line of progress. Ctrl-C ends it with what was found until then.
MadePrivacyScan runScan(PrivacyScanRequest request, std::string const& title, ProgressLine::Output output);

struct HiddenText {
    MadePrivacyScan made;
    KeptScan kept;
    bool isNothingNew = false; // all of it was looked at before
};

/// Scans the project, which nobody holds meanwhile, and takes in what was found as one step. What is looked for is
/// what the project's settings say after `change`.
HiddenText hidePrivateText(std::filesystem::path const& package, ScanExtent extent, ProgressLine::Output output,
                           std::function<void(RedactionSettings&)> const& change = {});

/// "Found 3 API keys and 1 email: 4 hidden, 0 rejected before." and what else came of it, a line each.
void printHidden(HiddenText const& hidden);

/// For a take that was just saved, whose making does not fail because of this: scans it and says what was hidden.
/// False where it could not be looked at, which is said too.
bool hideInNewTake(std::filesystem::path const& package, ProgressLine::Output output);

}
