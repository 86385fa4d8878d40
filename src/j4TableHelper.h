// Small helpers of the table's code around the instrument's library.
#pragma once

#include <string>

#include "Utilities/Tools/ScopeObject.h"

namespace Kestrelon::DeviceDriver::J4T {

/// Keeps one option of the instrument's library and writes it back at the end of the scope.
class SavedOption : private Utilities::Tools::ScopeObject {
public:
    explicit SavedOption(const std::string& key);
    ~SavedOption() noexcept(false);

private:
    std::string key;
    std::string value;
};

/// Runs one of several steps that are all to be tried; a failure of it ends here.
template <class Step>
void TryStep(Step step)
{
    try {
        step();
    } catch (...) {}
}

}  // namespace Kestrelon::DeviceDriver::J4T
