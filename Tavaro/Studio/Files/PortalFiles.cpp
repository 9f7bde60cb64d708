#include <Tavaro/Studio/Files/PortalFiles.h>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace tavaro {

namespace {

QString const portal = QStringLiteral("org.freedesktop.portal.Desktop");
QString const place = QStringLiteral("/org/freedesktop/portal/desktop");
QString const requests = QStringLiteral("org.freedesktop.portal.Request");
constexpr int patience = 5000; // milliseconds, for a portal that only begins

/// As the portal has them: (u s), where 0 is a pattern of names, and (s a(us)).
struct Pattern {
    uint sort = 0;
    QString text;
};
struct Filter {
    QString title;
    QList<Pattern> patterns;
};

QDBusArgument& operator<<(QDBusArgument& argument, Pattern const& pattern) {
    argument.beginStructure();
    argument << pattern.sort << pattern.text;
    argument.endStructure();
    return argument;
}
QDBusArgument const& operator>>(QDBusArgument const& argument, Pattern& pattern) {
    argument.beginStructure();
    argument >> pattern.sort >> pattern.text;
    argument.endStructure();
    return argument;
}
QDBusArgument& operator<<(QDBusArgument& argument, Filter const& filter) {
    argument.beginStructure();
    argument << filter.title << filter.patterns;
    argument.endStructure();
    return argument;
}
QDBusArgument const& operator>>(QDBusArgument const& argument, Filter& filter) {
    argument.beginStructure();
    argument >> filter.title >> filter.patterns;
    argument.endStructure();
    return argument;
}

/// "*.srt" in either case: `*.[sS][rR][tT]`.
QString inEitherCase(QString const& glob) {
    QString text;
    for (auto const letter : glob) {
        if (letter.isLetter())
            text += QLatin1Char('[') + letter.toLower() + letter.toUpper() + QLatin1Char(']');
        else
            text += letter;
    }
    return text;
}

QVariant filtersOf(QList<FileKind> const& kinds) {
    QList<Filter> filters;
    for (auto const& kind : kinds) {
        Filter filter{kind.title, {}};
        for (auto const& glob : kind.globs) filter.patterns.push_back({0, inEitherCase(glob)});
        filters.push_back(filter);
    }
    return QVariant::fromValue(filters);
}

QVariantMap optionsOf(FileQuestion const& question, QString const& token) {
    QVariantMap options{{QStringLiteral("handle_token"), token}, {QStringLiteral("modal"), true}};
    if (question.purpose == FilePurpose::openSeveral) options[QStringLiteral("multiple")] = true;
    if (question.purpose == FilePurpose::folder) options[QStringLiteral("directory")] = true;
    if (!question.kinds.empty()) options[QStringLiteral("filters")] = filtersOf(question.kinds);
    if (!question.folder.isEmpty()) {
        auto bytes = question.folder.toUtf8();
        bytes.append('\0');
        options[QStringLiteral("current_folder")] = bytes;
    }
    if (!question.name.isEmpty()) options[QStringLiteral("current_name")] = question.name;
    return options;
}

}

PortalFiles::PortalFiles(QDBusConnection const& session) : session_(session) {
    static bool const isKnown = [] {
        qDBusRegisterMetaType<Pattern>();
        qDBusRegisterMetaType<QList<Pattern>>();
        qDBusRegisterMetaType<Filter>();
        qDBusRegisterMetaType<QList<Filter>>();
        return true;
    }();
    Q_UNUSED(isKnown);
}

PortalFiles::~PortalFiles() { forget(); }

void PortalFiles::ask(FileQuestion const& question) {
    forget();
    if (!session_.isConnected()) return Q_EMIT unavailable();
    auto const token = QStringLiteral("tavaro%1_%2").arg(QCoreApplication::applicationPid()).arg(++asked_);
    auto const sender = session_.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    listenTo(place + QStringLiteral("/request/%1/%2").arg(sender, token)); // which may answer before the call does
    auto const method = question.purpose == FilePurpose::save ? QStringLiteral("SaveFile") : QStringLiteral("OpenFile");
    auto call =
        QDBusMessage::createMethodCall(portal, place, QStringLiteral("org.freedesktop.portal.FileChooser"), method);
    call << question.window << question.title << optionsOf(question, token);
    auto* const answer = new QDBusPendingCallWatcher(session_.asyncCall(call, patience), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer, number = asked_] {
        QDBusPendingReply<QDBusObjectPath> const reply = *answer;
        answer->deleteLater();
        if (number != asked_ || !isAsking()) return;
        if (!reply.isError()) return listenTo(reply.value().path()); // old portals choose it themselves
        forget();
        Q_EMIT unavailable();
    });
}

void PortalFiles::listenTo(QString const& request) {
    if (request == request_) return;
    auto const response = QStringLiteral("Response");
    if (isAsking()) session_.disconnect(portal, request_, requests, response, this, SLOT(respond(uint, QVariantMap)));
    request_ = request;
    session_.connect(portal, request_, requests, response, this, SLOT(respond(uint, QVariantMap)));
}

void PortalFiles::respond(uint response, QVariantMap const& results) {
    constexpr uint done = 0, cancelledByUser = 1;
    auto const request = request_;
    listenTo({});
    if (request.isEmpty()) return;
    if (response == cancelledByUser) return Q_EMIT cancelled();
    auto const files = QUrl::fromStringList(results.value(QStringLiteral("uris")).toStringList());
    if (response != done || files.empty()) return Q_EMIT unavailable();
    Q_EMIT chosen(files);
}

void PortalFiles::forget() {
    if (!isAsking()) return;
    session_.send(QDBusMessage::createMethodCall(portal, request_, requests, QStringLiteral("Close")));
    listenTo({});
}

}
