// Operations of J4_Private that are the table's own; all others go to the instrument's library.
#pragma once

#include <cstdint>

namespace Kestrelon::DeviceDriver::J4T::TableOperation {

inline constexpr int32_t First = 1000;
inline constexpr int32_t Write = 1001;  ///< J4PrivateTableRequest, as the next
inline constexpr int32_t Read = 1002;
inline constexpr int32_t Last = 1999;

}  // namespace Kestrelon::DeviceDriver::J4T::TableOperation
