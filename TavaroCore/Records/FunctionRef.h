#pragma once

#include <memory>
#include <type_traits>
#include <utility>

namespace tavaro {

template<class Signature> class FunctionRef;

/// Borrows a callable for the length of one call; owns nothing and never allocates.
template<class Result, class... Arguments> class FunctionRef<Result(Arguments...)> {
public:
    template<class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, FunctionRef> &&
             std::is_invocable_r_v<Result, Callable&, Arguments...>) FunctionRef(Callable&& callable)
        : object_(const_cast<void*>(static_cast<void const*>(std::addressof(callable))))
        , call_([](void* object, Arguments... arguments) -> Result {
            return (*static_cast<std::remove_reference_t<Callable>*>(object))(std::forward<Arguments>(arguments)...);
        }) {}

    Result operator()(Arguments... arguments) const { return call_(object_, std::forward<Arguments>(arguments)...); }

private:
    void* object_;
    Result (*call_)(void*, Arguments...);
};

}
