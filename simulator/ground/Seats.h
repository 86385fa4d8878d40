// What the instruments know of the tables beside them: which one of them carries an instrument.
#pragma once

#include <string>

#include "simulator/ground/Carriage.h"

namespace J4Bench {

class Seats {
public:
    virtual ~Seats() = default;

    /// The carriage of the table in which the instrument with this serial number sits, nullptr when it sits
    /// nowhere.
    virtual Carriage* CarriageOf(const std::string& instrumentSerial) = 0;
};

}  // namespace J4Bench
