// SPDX-License-Identifier: GPL-3.0-or-later
#include "tuning/ScalaLines.h"

#include "kits/support/Quoted.h"

#include <algorithm>
#include <utility>

namespace vexa {

namespace {

constexpr std::string_view kBlanks = " \t";
/// Some editors put this mark at the front of a UTF-8 text.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
/// Editors of DOS put it, once or more often, at the end of a text.
constexpr char kEndMark = '\x1A';

} // namespace

ScalaLines::ScalaLines(std::string_view bytes, std::string name)
    : rest(bytes), name(std::move(name)) {
    if (rest.starts_with(kByteOrderMark))
        rest.remove_prefix(kByteOrderMark.size());
    rest = rest.substr(0, rest.find_last_not_of(kEndMark) + 1);
}

bool ScalaLines::Next() {
    while (!rest.empty()) {
        text = rest.substr(0, rest.find_first_of("\r\n"));
        rest.remove_prefix(text.size());
        rest.remove_prefix(rest.starts_with("\r\n") ? 2 : std::min<std::size_t>(rest.size(), 1));
        number++;
        if (!text.starts_with('!'))
            return true;
    }
    text = {};
    ended = true;
    return false;
}

bool ScalaLines::NextFilled() {
    while (Next()) {
        if (!FirstWord(text).empty())
            return true;
    }
    return false;
}

kits::Error ScalaLines::Expected(const std::string& what) const {
    return Fault(Number(),
                 "expected " + what +
                     (ended ? ", but the file ends here" : ", not " + kits::Quoted(text)));
}

kits::Error ScalaLines::Fault(int line, const std::string& reason) const {
    return kits::At({name, static_cast<std::size_t>(line)}, {reason});
}

std::string_view FirstWord(std::string_view line) {
    line.remove_prefix(std::min(line.find_first_not_of(kBlanks), line.size()));
    return line.substr(0, line.find_first_of(kBlanks));
}

} // namespace vexa
