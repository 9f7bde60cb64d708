#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>
#include <string>
#include <string_view>

/// Hidden names for what is being made beside its final place. Who makes something holds a lock on it for as long; the
/// lock ends with its process, so what nobody holds was left by a process that was killed.
namespace tavaro::hidden {

/// ".project.json.tavaro-4711-0.tmp" for "project.json": a different one for every process and call, so that writers of
/// one name do not meet before the last step. It ends like the name plus "tmp", which earlier versions used and other
/// programs that copy or search projects know to pass over.
std::filesystem::path neighbour(std::filesystem::path const& file);

/// Whether it is such a name, of whatever file.
bool isNeighbourName(std::string_view name);

/// Removes what killed processes left in the folder of `file`; what has the names of earlier versions, which say less
/// of who made it, only where it was to become `file`.
void removeAbandoned(std::filesystem::path const& file);

/// Locks what was just made under a hidden name. False when a remover was faster, took it for abandoned, and it is
/// gone: then another one has to be made. True without a lock where the file system knows none.
bool hold(FileDescriptor const& made, std::filesystem::path const& name);

}
