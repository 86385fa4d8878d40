// Reference-counted owner of one object. The count is a plain 16-bit integer: a SmartPointer and its
// copies belong to one thread.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::Utilities::Tools {

template <class T>
class SmartPointer {
public:
    SmartPointer() = default;

    /// Takes the object over; a null pointer gives a null SmartPointer.
    explicit SmartPointer(T* pointer)
    {
        if (pointer != nullptr) {
            std::unique_ptr<T> guard(pointer);
            count = new uint16_t(1);
            object = guard.release();
        }
    }

    SmartPointer(const SmartPointer& other) : count(other.count), object(other.object)
    {
        if (count != nullptr) {
            ++*count;
        }
    }

    ~SmartPointer() { Release(); }

    SmartPointer& operator=(const SmartPointer& other)
    {
        if (this != &other) {
            SmartPointer copy(other);
            std::swap(count, copy.count);
            std::swap(object, copy.object);
        }
        return *this;
    }

    /// 0 releases the object. @throws std::invalid_argument for any other value
    SmartPointer& operator=(long value)
    {
        if (value != 0) {
            throw std::invalid_argument("SmartPointer<T>& operator =(long) argument was != Zero");
        }
        Release();
        return *this;
    }

    /// @throws NullPointerException when there is no object
    T* operator->() const
    {
        if (object == nullptr) {
            throw NullAccess(J4T_TRACE_HERE);
        }
        return object;
    }

    /// @throws NullPointerException when there is no object
    T& operator*() const
    {
        if (object == nullptr) {
            throw NullAccess(J4T_TRACE_HERE);
        }
        return *object;
    }

    bool IsNull() const { return object == nullptr; }

private:
    static Exceptions::NullPointerException NullAccess(const std::string& entry)
    {
        return Exceptions::NullPointerException(std::string("accessed null pointer (") + typeid(T).name() + ")", entry);
    }

    /// Empties the members first, so that code run by the object's destructor sees a null pointer.
    void Release() { LowerCount(std::exchange(count, nullptr), std::exchange(object, nullptr)); }

    /// Not inlined: where several copies end in one function, GCC 12 takes the counts for freed twice.
    [[gnu::noinline]] static void LowerCount(uint16_t* count, T* object)
    {
        if (count != nullptr && --*count == 0) {
            delete object;
            delete count;
        }
    }

    uint16_t* count = nullptr;
    T* object = nullptr;
};

}  // namespace Kestrelon::Utilities::Tools
