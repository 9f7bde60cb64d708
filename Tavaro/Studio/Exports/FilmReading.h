#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Privacy/PrivacyScanJob.h>

#include <TavaroCore/Project/DemoProject.h>
#endif

#include <QString>

#include <filesystem>
#include <functional>
#include <string>

namespace tavaro {

struct LegibleText;

/// What came of it.
struct FilmVerdict {
    std::string said; // sentences
    bool isLegible = false;
};

/// "2 private texts can be read in it.", and which they are, each in a line; of many the first.
FilmVerdict verdictOn(std::vector<LegibleText> const& texts);

/// A finished film that is read again beside the main thread: whether anything of what its project counts as private is
/// still legible. Ends where it goes away.
class FilmReading {
public:
    /// `over` is called once, at the end. A scan that is given stands in for the real one.
    FilmReading(MainQueue& queue, std::filesystem::path const& film, DemoProject project, MovieScan const& scan,
                std::function<void(FilmVerdict const&)> over);

    /// Comes to its end soon, and says so.
    void cancel() { job_.cancel(); }
    double share() const;  // 0…1
    QString state() const; // "0:12 of 1:40"

private:
    FilmVerdict verdict();

    DemoProject project_; // as the film shows it
    ScanProgress progress_;
    Job<MadePrivacyScan, ScanProgress> job_;
};

}
