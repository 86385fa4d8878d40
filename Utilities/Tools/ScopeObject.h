// Base of objects that restore something at the end of a scope, where restoring itself may fail: the
// failure goes on, unless an exception is already on its way out of the scope; that one has the precedence.
#pragma once

#include <exception>

namespace Kestrelon::Utilities::Tools {

class ScopeObject {
protected:
    ScopeObject() = default;
    ~ScopeObject() = default;
    ScopeObject(const ScopeObject&) = delete;
    ScopeObject& operator=(const ScopeObject&) = delete;

    /// For the destructor of the derived class, which has to be noexcept(false).
    template <class Action>
    void AtEnd(Action action)
    {
        try {
            action();
        } catch (...) {
            if (std::uncaught_exceptions() <= exceptionsAtStart) {
                throw;
            }
        }
    }

private:
    int exceptionsAtStart = std::uncaught_exceptions();
};

}  // namespace Kestrelon::Utilities::Tools
