#include <TavaroCore/Records/JSONError.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

namespace tavaro {

namespace {

std::string joined(std::string const& outer, std::string const& inner) {
    if (inner.empty() || inner.front() == '[') return outer + inner;
    return outer + "." + inner;
}

}

JSONError::JSONError(Kind kind, std::string problem, std::string path)
    : Error(path.empty() ? problem : path + ": " + problem)
    , kind_(kind)
    , problem_(std::move(problem))
    , path_(std::move(path)) {}

JSONError JSONError::inside(std::string_view key) const { return {kind_, problem_, joined(excerpt(key), path_)}; }

JSONError JSONError::inside(std::size_t index) const {
    return {kind_, problem_, joined(fmt::format("[{}]", index), path_)};
}

}
