// SPDX-License-Identifier: GPL-3.0-or-later
#include "xml/MXFragment.h"

#include "kits/support/Quoted.h"
#include "xml/FragmentWalk.h"
#include "xml/MXStatus.h"

#include <algorithm>
#include <new>

namespace vexa {

namespace {

/// Adds a remark on the first reference in the text that is not resolved. `left` is the number of
/// bytes from the text's beginning to the end of the document.
void RemarkOnReferences(std::string_view text, std::size_t left, Remarks& remarks) {
    for (std::size_t at = text.find('&'); at != text.npos; at = text.find('&', at + 1)) {
        const std::string_view rest = text.substr(at);
        std::size_t end = 1;
        while (end < rest.size() && (IsNameByte(rest[end]) || rest[end] == '#'))
            end++;
        const std::string_view reference = rest.substr(0, end + 1);
        if (end == 1 || !reference.ends_with(';') || reference == "&lt;" || reference == "&amp;")
            continue;
        remarks.Add(left - at, "the reference " + kits::Quoted(reference) +
                                   " stays as it is written; only &lt; and &amp; are resolved");
        return;
    }
}

/// Adds a remark on the end of an element, unless it is the element's own end tag. `next` failed to
/// be read there with `status`, and `text` is what remains of the document.
void RemarkOnEnd(const MXFragment& element, const MXFragment& next, int32 status,
                 std::string_view text, Remarks& remarks) {
    const std::string expected = "expected </" + kits::Shown(element.name) + ">, found ";
    if (status == MX_END_TAG) {
        std::string_view name = text.substr(2, std::min(text.find('>'), text.size()) - 2);
        name.remove_suffix(name.size() - (name.find_last_not_of(" \t\n\r") + 1));
        if (name != std::string_view(element.name))
            remarks.Add(next.TextLeft(), expected + kits::Quoted("</" + std::string(name)));
    } else if (status == MX_NOTHING) {
        remarks.Add(next.TextLeft(), expected + "the end of the text");
    } else {
        remarks.Add(next.TextLeft(), expected + StatusText(status));
    }
}

} // namespace

MXFragment::MXFragment(long type, MXString name, MXString attributeText)
    : name(std::move(name)), type(type) {
    attributes.ParseString(attributeText);
}

MXFragment::MXFragment(MXString name, MXString attributeText, MXString text)
    : MXFragment(MX_ELEMENT, std::move(name), std::move(attributeText)) {
    Adopt(std::make_unique<MXFragment>(MX_TEXT, std::move(text)));
}

/// Moves all descendants into the list of children before it destroys them. The destructor of a
/// child that still had children would recurse once per level of the tree.
void MXFragment::RemoveChildren() noexcept {
    for (const auto& child : children)
        children.splice(children.end(), child->children);
    children.clear();
}

int32 MXFragment::ParseString(MXString& text, Remarks* remarks) {
    const int32 status = ParseHead(text, remarks);
    if (status != MX_OK || type != MX_ELEMENT)
        return status;
    // The elements that have not ended yet, the innermost last.
    std::vector<MXFragment*> open{this};
    auto next = std::make_unique<MXFragment>(MX_UNPARSED);
    bool hasEnded = false;
    while (!open.empty()) {
        const int32 nextStatus = next->ParseHead(text, remarks);
        if (nextStatus == MX_OK) {
            MXFragment& child = open.back()->Adopt(std::move(next));
            if (child.type == MX_ELEMENT)
                open.push_back(&child);
            next = std::make_unique<MXFragment>(MX_UNPARSED);
        } else {
            // The innermost element ends at its end tag, or at anything that cannot be read.
            if (remarks && !hasEnded)
                RemarkOnEnd(*open.back(), *next, nextStatus, text, *remarks);
            // At the end of the text, one remark suffices for all open elements.
            hasEnded = text.Length() == 0;
            text.RemovePastFirst(">");
            open.pop_back();
        }
    }
    return MX_OK;
}

/// Reads a fragment, but neither the children nor the end tag of an element.
int32 MXFragment::ParseHead(MXString& text, Remarks* remarks) {
    type = MX_UNPARSED;
    attributes.MakeEmpty();
    RemoveChildren();
    const bool isMarkup = text.BeginsWithLt();
    text.RemoveLeadingSpace();
    textLeft = static_cast<std::size_t>(text.Length());
    if (!isMarkup) {
        MXString content = text.SplitOffAtFirst("<");
        if (remarks)
            RemarkOnReferences(content, textLeft, *remarks);
        content.ResolveLtAmpRef().RemoveTrailingSpace();
        if (content.Length() == 0)
            return MX_NOTHING;
        name = std::move(content);
        type = MX_TEXT;
        return MX_OK;
    }
    switch (text[1]) {
    case '/':
        return MX_END_TAG;
    case '?':
        return ParseInstruction(text);
    case '!':
        if (text.BeginsWith("<!--"))
            return ParseEnclosed(text, "<!--", "-->", MX_COMMENT, MX_OPEN_COMMENT);
        if (text.BeginsWith("<![CDATA["))
            return ParseEnclosed(text, "<![CDATA[", "]]>", MX_CDATA, MX_OPEN_CDATA);
        return MX_DECLARATION;
    default:
        return ParseTag(text, remarks);
    }
}

/// Reads a fragment of type `enclosed` whose content between its marks is kept unchanged. Returns
/// `unclosed` if the closing mark is missing.
int32 MXFragment::ParseEnclosed(MXString& text, const char* opening, const char* closing,
                                int32 enclosed, int32 unclosed) {
    text.Remove(0, static_cast<int64>(std::string_view(opening).size()));
    name = text.SplitOffAtFirst(closing);
    if (text.Length() == 0)
        return unclosed;
    text.Remove(0, static_cast<int64>(std::string_view(closing).size()));
    type = enclosed;
    return MX_OK;
}

int32 MXFragment::ParseInstruction(MXString& text) {
    text.Remove(0, 2);
    name = text.SplitOffAtFirstNonNameChar();
    MXString attributeText = text.SplitOffAtFirst("?>");
    attributes.ParseString(attributeText);
    if (text.Length() == 0)
        return MX_OPEN_INSTRUCTION;
    text.Remove(0, 2);
    type = MX_PROCESSING_INSTRUCTION;
    return MX_OK;
}

int32 MXFragment::ParseTag(MXString& text, Remarks* remarks) {
    MXString tag = text.SplitOffAtFirst(">");
    if (text.Length() == 0)
        return MX_OPEN_TAG;
    text.Remove(0, 1);
    tag.Remove(0, 1);
    name = tag.SplitOffAtFirstNonNameChar();
    type = MX_ELEMENT;
    if (tag[tag.Length() - 1] == '/') {
        type = MX_EMPTY_ELEMENT;
        tag.Remove(tag.Length() - 1, 1);
    }
    if (remarks && !IsName(name))
        remarks->Add(textLeft, "expected the name of an element, found " + kits::Quoted(name));
    // The attributes are followed by ">", or by "/>" of an empty element, and the remaining text.
    const int64 behind = text.Length() + (type == MX_EMPTY_ELEMENT ? 2 : 1);
    attributes.ParseString(tag, static_cast<std::size_t>(behind), remarks);
    return MX_OK;
}

MXString MXFragment::AssembleString() const {
    MXString text;
    AppendTo(text);
    return text;
}

MXString MXFragment::AssembleString(MXString indent, MXString unit) const {
    MXString text;
    AppendTo(text, indent, unit);
    return text;
}

void MXFragment::AppendTo(MXString& text) const {
    WalkFragments(
        *this,
        [&text](const MXFragment& fragment) {
            fragment.AppendOpening(text);
            return fragment.type == MX_ELEMENT ? WalkStep::Into : WalkStep::Past;
        },
        [&text](const MXFragment& element) { element.AppendClosing(text); });
}

void MXFragment::AppendTo(MXString& text, const MXString& indent, const MXString& unit) const {
    MXString begin = indent;
    WalkFragments(
        *this,
        [&](const MXFragment& fragment) {
            text.Append(begin);
            if (fragment.IsOneLine()) {
                fragment.AppendTo(text);
                text.Append("\n");
                return WalkStep::Past;
            }
            fragment.AppendOpening(text);
            text.Append("\n");
            begin.Append(unit);
            return WalkStep::Into;
        },
        [&](const MXFragment& element) {
            begin.Remove(begin.Length() - unit.Length(), unit.Length());
            text.Append(begin);
            element.AppendClosing(text);
            text.Append("\n");
        });
}

/// Returns whether the indented form is the compact form on one line.
bool MXFragment::IsOneLine() const {
    if (type != MX_ELEMENT || children.empty())
        return true;
    return children.size() == 1 && children.front()->type != MX_ELEMENT;
}

/// Appends the start tag of an element, or the whole of any other fragment.
void MXFragment::AppendOpening(MXString& text) const {
    switch (type) {
    case MX_ELEMENT:
    case MX_EMPTY_ELEMENT:
        text.Append("<").Append(name);
        attributes.AppendTo(text);
        text.Append(type == MX_ELEMENT ? ">" : "/>");
        break;
    case MX_PROCESSING_INSTRUCTION:
        text.Append("<?").Append(name);
        attributes.AppendTo(text);
        text.Append("?>");
        break;
    case MX_COMMENT:
        text.Append("<!--").Append(name).Append("-->");
        break;
    case MX_TEXT:
        text.Append(MXString(name).MakeLtAmpRef());
        break;
    case MX_CDATA:
        text.Append("<![CDATA[").Append(name).Append("]]>");
        break;
    default:
        text.Append("!!!!DEFAULT IN MXFragment::AssembleString()!!!!");
    }
}

void MXFragment::AppendClosing(MXString& text) const {
    text.Append("</").Append(name).Append(">");
}

MXFragmentList MXFragment::FindFragment(long mask, MXString wanted) {
    MXFragmentList found;
    CollectInto(found, mask, wanted);
    return found;
}

void MXFragment::CollectInto(MXFragmentList& found, long mask, const MXString& wanted) {
    WalkFragments(*this, [&](MXFragment& fragment) {
        if ((fragment.type & mask) != 0 && fragment.name == wanted)
            found.Add(fragment);
        return WalkStep::Into;
    });
}

int32 MXFragment::Add(MXString text) try {
    Adopt(std::make_unique<MXFragment>(MX_TEXT, std::move(text)));
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

int32 MXFragment::Add(MXFragment* child) try {
    if (!child)
        return -1;
    children.emplace_back();
    children.back().reset(child);
    return 0;
} catch (const std::bad_alloc&) {
    return -1;
}

MXFragment& MXFragment::Adopt(std::unique_ptr<MXFragment> child) {
    return *children.emplace_back(std::move(child));
}

MXString MXFragment::GetContainedText() const {
    MXString text;
    WalkFragments(*this, [&text](const MXFragment& fragment) {
        if (fragment.type == MX_TEXT)
            text.Append(fragment.name);
        return fragment.type == MX_ELEMENT ? WalkStep::Into : WalkStep::Past;
    });
    return text;
}

} // namespace vexa
