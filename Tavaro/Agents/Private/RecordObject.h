#pragma once

#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Records/JSONValue.h>

namespace tavaro {

/// A record as results of tools have it.
template<RecordType Record> JSONValue::Object objectOf(Record const& record) {
    return std::get<JSONValue::Object>(JSONValue::parse(encodeJSON(record)).content);
}

}
