#pragma once

#include <Tavaro/Model/Jobs/Job.h>
#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Studio/Library/Activities.h>
#include <Tavaro/Studio/Library/LibraryModel.h>
#include <Tavaro/Studio/Library/UnfinishedTakes.h>

#include <QFileSystemWatcher>
#include <QList>
#include <QObject>
#include <QTimer>
#include <QUrl>

#include <deque>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>

namespace tavaro {

class Application;

/// What the library page does: the projects, the takes that nobody finished, and what becomes of them. Nothing here
/// waits for a disk; what takes long is among the activities, and what was done is said with a way back.
class Library : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::LibraryModel* projects READ projects CONSTANT)
    Q_PROPERTY(tavaro::UnfinishedTakes* takes READ takes CONSTANT)
    Q_PROPERTY(tavaro::Activities* activities READ activities CONSTANT)
    Q_PROPERTY(bool isLoaded READ isLoaded NOTIFY changed)
    Q_PROPERTY(bool isEmpty READ isEmpty NOTIFY changed)

public:
    Library(MainQueue& queue, Application& application);

    LibraryModel* projects() { return &projects_; }
    UnfinishedTakes* takes() { return &takes_; }
    Activities* activities() { return &activities_; }
    /// Whether it is known what there is.
    bool isLoaded() const { return isLoaded_; }
    bool isEmpty() const { return projects_.isEmpty() && takes_.count() == 0; }

    /// Looks again at what there is.
    Q_INVOKABLE void refresh();
    Q_INVOKABLE void rename(QString const& package, QString const& name);
    Q_INVOKABLE void duplicate(QString const& package);
    /// The file that is offered for an archive of it.
    Q_INVOKABLE QUrl archiveFor(QString const& package) const;
    Q_INVOKABLE void archive(QString const& package, QUrl const& file);
    Q_INVOKABLE void moveToTrash(QString const& package);
    /// Movies and archives become projects, one after the other; projects are opened.
    Q_INVOKABLE void bring(QList<QUrl> const& files);
    Q_INVOKABLE void keep(QString const& take);
    /// The take is gone for good once the way back is.
    Q_INVOKABLE void discard(QString const& take);

    /// What was offered with what was said last.
    Q_INVOKABLE void accept();
    Q_INVOKABLE void lapse();

Q_SIGNALS:
    void changed();
    /// `action` names the way back, or on; empty where there is none.
    void said(QString const& text, QString const& action);
    void failed(QString const& sentence);
    void openRequested(QString const& package);
    /// A project is not where it was.
    void left(QString const& package);

private:
    struct Offer {
        QString action;
        std::function<void()> accept;
        std::function<void()> lapse;
    };
    /// What a job is to somebody who watches it.
    template<class Result, class Progress> struct Watched {
        QString title;
        std::function<double(Progress const&)> part;
        std::function<void(Result&)> done;
        std::function<void()> over; // also after a failure
    };

    void say(QString const& text, Offer offer = {});
    void watchFolders();
    void listed(Outcome<std::vector<LibraryItem>> const& found);
    void listTakes();
    template<class Work> void attempt(Work const& work);
    template<class Work, class Done> void aside(Work work, Done done);
    template<class Result, class Progress> void run(Job<Result, Progress> job, Watched<Result, Progress> watched);
    void bringNext();
    void import(std::filesystem::path const& movie);
    void unpack(std::filesystem::path const& archive);
    QString nameOf(std::filesystem::path const& package) const;
    void renameFile(std::filesystem::path const& package, std::string const& name);

    MainQueue& queue_;
    Application& application_;
    LibraryModel projects_;
    UnfinishedTakes takes_;
    Activities activities_;
    bool isLoaded_ = false;
    bool isListing_ = false;
    bool isStale_ = false; // once more after the present listing
    Offer offer_;
    std::deque<std::filesystem::path> arrivals_; // to be brought in; the first is on its way
    QFileSystemWatcher watcher_;
    QTimer settled_;                            // since the folders last changed
    std::map<int, std::shared_ptr<void>> jobs_; // by the number of their activity
    SideQueue side_;
};

}
