#pragma once

#include <TavaroCore/Records/JSONValue.h>

namespace tavaro {

/// RFC 7386 as its text defines it, on trees: what patching a record in place has to meet.
inline void mergePatch(JSONValue& target, JSONValue const& patch) {
    auto const* changes = patch.as<JSONValue::Object>();
    if (!changes) {
        target = patch;
        return;
    }
    if (!target.as<JSONValue::Object>()) target = {JSONValue::Object{}};
    auto& members = std::get<JSONValue::Object>(target.content);
    for (auto const& [key, change] : *changes) {
        if (change.isNull())
            members.erase(key);
        else
            mergePatch(members[key], change);
    }
}

/// The patch that makes `to` of `from`.
inline JSONValue difference(JSONValue const& from, JSONValue const& to) {
    auto const* before = from.as<JSONValue::Object>();
    auto const* after = to.as<JSONValue::Object>();
    if (!before || !after) return to;
    JSONValue::Object patch;
    for (auto const& [key, value] : *before) {
        if (!after->contains(key)) patch[key] = {};
    }
    for (auto const& [key, value] : *after) {
        auto const old = before->find(key);
        if (old == before->end())
            patch[key] = value;
        else if (!(old->second == value))
            patch[key] = difference(old->second, value);
    }
    return {patch};
}

}
