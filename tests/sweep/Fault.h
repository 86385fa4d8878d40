// The one fault of a session: which operation of which seam fails, and how. The seams ask it at each operation.
#pragma once

#include <cstdint>
#include <functional>

namespace J4Test {

enum class Seam { Memory, Usb, Library };

/// A way in which an operation fails.
struct Way {
    const char* name;
    Seam seam;
    bool lasting;                       ///< from the n-th operation on, instead of the n-th alone
    std::function<void()> action = {};  ///< of USB and library: before the operation; may throw
    int32_t status = 0;                 ///< of a function of the instrument's library
    const char* text = "";              ///< of its J4_GetOption
    std::function<bool()> chance = {};  ///< decides at each operation instead, whether it fails
    std::function<void(unsigned char*, unsigned long&)> received = {};  ///< may change what USB received
};

struct Fault {
    static inline const Way* way = nullptr;  ///< null: nothing fails
    static inline long at = 0;               ///< the operation that fails, counted from 1
    static inline long count = 0;            ///< operations of the seam up to now
    static inline bool hasStruck = false;
    static inline bool inLibrary = false;  ///< there alone is memory counted
    static inline long blocks = 0;         ///< of memory in use

    static void Arm(const Way* newWay, long operation)
    {
        way = newWay;
        at = operation;
        count = 0;
        hasStruck = false;
    }

    /// Counts one operation; true when it has to fail.
    static bool Strikes(Seam seam)
    {
        if (way == nullptr || way->seam != seam) {
            return false;
        }
        ++count;
        const bool strikes = way->chance ? way->chance() : count == at || (way->lasting && count > at);
        hasStruck = hasStruck || strikes;
        return strikes;
    }
};

/// What runs in its scope belongs to the library, or to its surroundings.
class Within {
public:
    explicit Within(bool library) : before(Fault::inLibrary) { Fault::inLibrary = library; }
    ~Within() { Fault::inLibrary = before; }
    Within(const Within&) = delete;
    Within& operator=(const Within&) = delete;

private:
    bool before;
};

}  // namespace J4Test
