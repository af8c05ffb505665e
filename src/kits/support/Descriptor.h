// SPDX-License-Identifier: GPL-3.0-or-later
// A file descriptor that closes itself.
#pragma once

#include <utility>

#include <unistd.h>

namespace kits {

/// Owns one descriptor of the system, or none (-1).
class Descriptor {
  public:
    explicit Descriptor(int number = -1) : number(number) {}
    Descriptor(Descriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~Descriptor() { Close(); }

    int Number() const { return number; }
    explicit operator bool() const { return number >= 0; }
    /// Returns false if the system reports a fault, such as that of a late write, in errno.
    bool Close() { return number < 0 || ::close(std::exchange(number, -1)) == 0; }

  private:
    int number;
};

} // namespace kits
