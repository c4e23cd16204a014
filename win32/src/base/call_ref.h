// A reference to a callable for one call. It is like std::function, but makes no copy and takes no
// memory. The callable must live as long as the call; a lambda in the argument list does.
#pragma once

#include <type_traits>
#include <utility>

namespace host {

template <class Signature>
class CallRef;

template <class Result, class... Arguments>
class CallRef<Result(Arguments...)> {
  public:
    template <class Callable>
    requires(!std::is_same_v<std::remove_cvref_t<Callable>, CallRef>)
        CallRef(const Callable& callable)
        : callable_(&callable), call_([](const void* target, Arguments... arguments) -> Result {
              return (*static_cast<const Callable*>(target))(std::forward<Arguments>(arguments)...);
          }) {}

    Result operator()(Arguments... arguments) const {
        return call_(callable_, std::forward<Arguments>(arguments)...);
    }

  private:
    const void* callable_;
    Result (*call_)(const void*, Arguments...);
};

}  // namespace host
