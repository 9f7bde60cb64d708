#pragma once

#include <TavaroCore/Package/FileStamp.h>
#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Records/JSONValue.h>
#include <TavaroCore/Records/Observers.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

namespace tavaro {

/// One thing that the user chooses, under a documented key. `Value` is `bool`, `std::int64_t`, `double`, `std::string`
/// or a list of texts. It is declared beside what it is about:
///
///     inline Preference<bool> const agentsEnabled{"com.tavaro.mcp.enabled", true};
template<class Value> struct Preference {
    std::string_view key; // reverse-DNS form, below "com.tavaro."
    Value unset{};        // what counts as long as nobody chose
    Value other = unset;  // and where the file holds a value of another kind
};

/// What the user chose: one JSON file, an object of those keys. Several programs may use it at once: each change is
/// made on what the others wrote, and what they wrote is seen by the next `get` or `refresh`. Keys that nobody here
/// knows stay as they are.
///
/// A file that is no JSON object is moved aside ("preferences.damaged.json"), and everything is as if nobody had
/// chosen. One that cannot be read counts as empty and is not written over. Either is reported once.
///
/// One thread, the main queue's in a program that has one.
class Preferences {
public:
    using Values = JSONValue::Object;
    using Observation = Observers<>::Observation;

    /// "preferences.json" in `folders::configuration()`.
    static std::filesystem::path usualFile();
    /// `remark` gets a sentence for the user about a file that cannot be used.
    explicit Preferences(std::filesystem::path file = usualFile(), std::function<void(std::string const&)> remark = {});
    Preferences(Preferences const&) = delete;
    Preferences& operator=(Preferences const&) = delete;

    std::filesystem::path const& file() const { return file_; }
    /// The damaged files that lie aside, sorted.
    std::vector<std::filesystem::path> damagedFiles() const;

    /// Costs one `stat` where nothing changed.
    template<class Value> Value get(Preference<Value> const& preference) {
        refresh();
        return chosen(preference, values_);
    }
    /// On the disk when it returns. Throws `FileError`; what was chosen before then still is.
    template<class Value> void set(Preference<Value> const& preference, std::type_identity_t<Value> const& value) {
        update<Value>(preference, [&](Value& chosen) { chosen = value; });
    }
    /// The same for a change that depends on what was chosen, such as one more entry of a list: nobody else writes
    /// between reading and writing.
    template<class Value>
    void update(Preference<Value> const& preference, FunctionRef<void(std::type_identity_t<Value>&)> change) {
        edit([&](Values& values) {
            auto value = chosen(preference, values);
            change(value);
            values.insert_or_assign(std::string(preference.key), jsonOf(value));
        });
    }
    /// As if nobody had chosen.
    template<class Value> void forget(Preference<Value> const& preference) {
        edit([&](Values& values) { values.erase(std::string(preference.key)); });
    }

    /// Looks whether another program wrote. True when something changed; observers are then called.
    bool refresh();
    /// Called after every change of the values, whoever made it, for as long as the observation lives.
    [[nodiscard]] Observation observe(std::function<void()> observer) { return observers_.add(std::move(observer)); }

    /// What a file of these bytes holds; none where they are no JSON object.
    static std::optional<Values> decode(std::string_view bytes);
    static std::string encode(Values const& values);

private:
    void edit(FunctionRef<void(Values&)> change);
    void ensureFolder() const;
    Values readWhole();
    std::optional<Values> read();
    Values readUnderLock();
    void moveAside();
    void write(Values const& values);
    void notify(Values const& before);

    template<class Value> static Value chosen(Preference<Value> const& preference, Values const& values) {
        auto const found = values.find(preference.key);
        return found == values.end() ? preference.unset : valueOf(found->second, preference.other);
    }
    static bool valueOf(JSONValue const& stored, bool other);
    static std::int64_t valueOf(JSONValue const& stored, std::int64_t other);
    static double valueOf(JSONValue const& stored, double other);
    static std::string valueOf(JSONValue const& stored, std::string const& other);
    static std::vector<std::string> valueOf(JSONValue const& stored, std::vector<std::string> const& other);
    template<class Value> static JSONValue jsonOf(Value const& value) { return {value}; }
    static JSONValue jsonOf(std::vector<std::string> const& texts);

    std::filesystem::path const file_;
    std::function<void(std::string const&)> const remark_;
    std::optional<FileStamp> stamp_; // of the file as it was last read or written
    bool isRead_ = false;            // at least once
    Values values_;
    std::optional<std::string> problem_; // to be reported once no lock is held
    Observers<> observers_;
};

}
