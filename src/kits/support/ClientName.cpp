// SPDX-License-Identifier: GPL-3.0-or-later
#include "kits/support/ClientName.h"

namespace kits {

namespace {

std::string& Name() {
    static std::string name = "Vexa";
    return name;
}

} // namespace

const std::string& ClientName() {
    return Name();
}

void SetClientName(const std::string& name) {
    Name() = name;
}

} // namespace kits
