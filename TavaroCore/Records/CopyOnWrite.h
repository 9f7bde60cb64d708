#pragma once

#include <memory>
#include <utility>

namespace tavaro {

/// A value that is large and rarely changed: copies share it until one of them is edited. Behaves as the value itself
/// (equality compares contents). Copies may live on different threads; one object belongs to one thread at a time.
template<class T> class CopyOnWrite {
public:
    using Value = T;

    CopyOnWrite() : value_(emptyValue()) {}
    CopyOnWrite(T value) : value_(std::make_shared<T>(std::move(value))) {}

    T const& operator*() const { return *value_; }
    T const* operator->() const { return value_.get(); }

    /// The value, open for changes; unshared first when another copy holds it.
    T& edit() {
        if (value_.use_count() != 1) value_ = std::make_shared<T>(*value_);
        return const_cast<T&>(*value_); // made here, from a non-const T
    }

    bool sharesWith(CopyOnWrite const& other) const { return value_ == other.value_; }

    /// The value as its copies share it, to be kept and given back later.
    std::shared_ptr<T const> const& shared() const { return value_; }
    static CopyOnWrite sharing(std::shared_ptr<T const> value) {
        CopyOnWrite result;
        result.value_ = std::move(value);
        return result;
    }

    friend bool operator==(CopyOnWrite const& a, CopyOnWrite const& b) { return a.value_ == b.value_ || *a == *b; }

private:
    static std::shared_ptr<T const> const& emptyValue() {
        static std::shared_ptr<T const> const empty = std::make_shared<T>();
        return empty;
    }

    std::shared_ptr<T const> value_;
};

}
