#include "TestFilePortal.h"

#include <QDBusArgument>

namespace tavaro {

namespace {

QString const place = QStringLiteral("/org/freedesktop/portal/desktop");

/// "Captions *.srt *.vtt", of (s a(us))s.
QStringList filtersOf(QVariant const& filters) {
    QStringList texts;
    auto const argument = filters.value<QDBusArgument>();
    argument.beginArray();
    while (!argument.atEnd()) {
        QString text;
        argument.beginStructure();
        argument >> text;
        argument.beginArray();
        while (!argument.atEnd()) {
            uint sort = 0;
            QString pattern;
            argument.beginStructure();
            argument >> sort >> pattern;
            argument.endStructure();
            text += " " + pattern;
        }
        argument.endArray();
        argument.endStructure();
        texts.push_back(text);
    }
    argument.endArray();
    return texts;
}

}

TestFilePortal::TestFilePortal(QDBusConnection const& bus) : bus_(bus) {
    bus_.registerObject(place, this, QDBusConnection::ExportAllSlots);
    bus_.registerService("org.freedesktop.portal.Desktop");
}

TestFilePortal::~TestFilePortal() {
    bus_.unregisterService("org.freedesktop.portal.Desktop");
    bus_.unregisterObject(place);
}

QDBusObjectPath TestFilePortal::OpenFile(QString const&, QString const& title, QVariantMap const& options) {
    return answer("OpenFile: " + title, options);
}

QDBusObjectPath TestFilePortal::SaveFile(QString const&, QString const& title, QVariantMap const& options) {
    return answer("SaveFile: " + title, options);
}

QDBusObjectPath TestFilePortal::answer(QString const& what, QVariantMap const& options) {
    QStringList words{what};
    for (auto const* name : {"multiple", "directory"})
        if (options.value(name).toBool()) words.push_back(name);
    if (options.contains("current_folder")) words.push_back(options["current_folder"].toByteArray().constData());
    if (options.contains("current_name")) words.push_back(options["current_name"].toString());
    if (options.contains("filters")) words += filtersOf(options["filters"]);
    asked.push_back(words.join(", "));
    auto const sender = message().service().mid(1).replace('.', '_');
    auto const request = place + "/request/" + sender + "/" + options["handle_token"].toString();
    auto signal = QDBusMessage::createSignal(request, "org.freedesktop.portal.Request", "Response");
    signal << response << results;
    bus_.send(signal);
    return QDBusObjectPath(request);
}

}
