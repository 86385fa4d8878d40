#include "simulator/table/TableUnit.h"

#include <utility>

namespace J4Bench {

TableUnit::TableUnit(BenchClock& clock, Journal& journal, Faults& faults, std::string usbSerial)
    : usbSerial(std::move(usbSerial)),
      controller(clock, faults),
      bridge(clock, journal, faults, controller, this->usbSerial)
{}

}  // namespace J4Bench
