#pragma once

#include <map>
#include <string>

namespace tavaro {

struct DemoProject;

/// The media files that the parts of a document which a patch can change are made of: each with the path of a field
/// that names it.
std::map<std::string, std::string> namedAssets(DemoProject const& project);

}
