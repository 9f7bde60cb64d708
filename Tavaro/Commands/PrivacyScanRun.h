#pragma once

#include <Tavaro/Commands/MadeTakeText.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <filesystem>
#include <functional>
#include <string>

namespace tavaro {
class ProjectPackage;
struct DemoProject;
}

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

/// Whether a take that is made now is to be looked at: where that is asked for, or wanted of each.
bool isScanWanted(bool isAskedFor);

/// For a take that was just saved, whose making does not fail because of this: scans it, where that is due, and says
/// what was hidden. False where it could not be looked at, which is said too; it is due still then.
bool hideInNewTake(std::filesystem::path const& package, TakeOutput output);

/// Says so where a take was to be looked at and was not, or not as a whole.
void tellIfScanIsDue(ProjectPackage const& package, DemoProject const& project);

}
