// The table's commands that are neither motion nor information: detection of the instrument's supply
// current, the electrostatic foil and its button, and the reset of the controller.
#pragma once

#include <cstdint>

#include "src/Communication/j4TableCommunication.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

class j4TableComMisc : public j4TableCommunication {
public:
    using j4TableCommunication::j4TableCommunication;

    /// Clears (false) or arms (true) the detection of the instrument's current.
    void J4CurrentInterrupt(bool on);
    /// True when the seated instrument has measured since the detection was armed.
    bool WasJ4CurrentMeasured();

    void ElectrostaticFoil(bool on);
    void ElectrostaticFoilButton(bool on);
    bool IsElectrostaticFoilEnabled();
    bool IsElectrostaticFoilButtonEnabled();

    /// Resets the controller; the motors are not ready afterwards.
    /// @param wait  give it a second to come up
    /// @throws TableException when the table refuses
    void Reset(bool wait);

private:
    uint8_t FoilState();
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
