// An object of the whole process: made at its first use, gone when the process ends or the library is unloaded. A
// static object of the application may still call after that, from its destructor: it gets a new one, which goes in its
// turn.
#pragma once

#include <cstdlib>
#include <utility>

namespace Kestrelon::Utilities::Tools {

/// @tparam make  function without arguments that gives the object, one for each object
template <auto make>
class StaticObject {
public:
    static auto& Get()
    {
        if (object == nullptr) {
            object = new Object(make());
            std::atexit(Destroy);
        }
        return *object;
    }

private:
    using Object = decltype(make());

    /// The pointer is empty before the object ends, for what its destructor calls.
    static void Destroy() { delete std::exchange(object, nullptr); }

    static inline Object* object = nullptr;
};

}  // namespace Kestrelon::Utilities::Tools
