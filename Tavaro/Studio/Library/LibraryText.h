#pragma once

#include <TavaroCore/Records/Date.h>

#include <QDateTime>
#include <QString>

#include <filesystem>

/// Words and values of the library for people and for QML.
namespace tavaro::libraryText {

/// How long ago something was, as people say it: "Just now", "5 minutes ago", "Yesterday", "12 March 2026".
QString age(Date const& moment, QDateTime const& now);
/// "1:05"
QString length(double seconds);

QString text(std::filesystem::path const& path);
std::filesystem::path path(QString const& text);

}
