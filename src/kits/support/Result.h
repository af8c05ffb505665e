// SPDX-License-Identifier: GPL-3.0-or-later
// A value, or an Error that says why there is none.
#pragma once

#include "kits/support/Error.h"

#include <optional>
#include <utility>

namespace kits {

/// A result is either a T or an Error. It converts to true when it holds a T.
template<class T>
class [[nodiscard]] Result {
  public:
    Result(T held) : value(std::move(held)) {}
    Result(Error fault) : error(std::move(fault)) {}

    explicit operator bool() const { return value.has_value(); }
    T& operator*() & { return *value; }
    T&& operator*() && { return std::move(*value); }
    const T& operator*() const& { return *value; }
    T* operator->() { return &*value; }
    const T* operator->() const { return &*value; }
    /// Returns what went wrong. It may be called only where there is no value.
    const Error& Fault() const { return error; }

  private:
    std::optional<T> value;
    Error error;
};

/// Success without a value, or an Error.
template<>
class [[nodiscard]] Result<void> {
  public:
    Result() = default;
    Result(Error fault) : error(std::move(fault)) {}

    explicit operator bool() const { return !error; }
    const Error& Fault() const { return *error; }

  private:
    std::optional<Error> error;
};

} // namespace kits
