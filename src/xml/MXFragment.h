// SPDX-License-Identifier: GPL-3.0-or-later
// One node of a document's tree, with everything below it.
#pragma once

#include "xml/MXAttributeList.h"
#include "xml/MXFragmentList.h"
#include "xml/Remarks.h"

#include <list>
#include <memory>

namespace vexa {

/// The kinds of fragments, of which a search takes several in one mask.
enum : long {
    MX_UNPARSED = -1,
    MX_ELEMENT = 1,
    MX_EMPTY_ELEMENT = 2,
    MX_PROCESSING_INSTRUCTION = 4,
    MX_COMMENT = 8,
    MX_TEXT = 16,
    MX_CDATA = 32,
};

/// Reads and writes this dialect: a tag ends at its first ">"; attributes stand in double quotes;
/// blanks around a text are not kept; a comment and a CDATA section are as they stand; the name of
/// an end tag is not looked at; and a fault inside an element ends the element instead of the
/// reading.
///
/// A tree may be of any depth and size: no operation recurses, and each takes time in proportion to
/// the text or the tree. A fragment owns its children. Any thread, one at a time for a tree.
class MXFragment {
  public:
    /// A list, as its entries can go over to another one without being copied or allocated.
    using Children = std::list<std::unique_ptr<MXFragment>>;

    explicit MXFragment(long type) : type(type) {}
    MXFragment(long type, MXString name) : name(std::move(name)), type(type) {}
    /// Makes a fragment with the attributes that are read from `attributeText`, as far as they are
    /// valid.
    MXFragment(long type, MXString name, MXString attributeText);
    /// Makes an element that holds a text.
    MXFragment(MXString name, MXString attributeText, MXString text);
    MXFragment(MXString name, MXString text) : MXFragment(std::move(name), {}, std::move(text)) {}
    /// Reads the text, as ParseString does; without success the type is MX_UNPARSED.
    explicit MXFragment(MXString& text) : type(MX_UNPARSED) { ParseString(text); }
    MXFragment(const MXFragment&) = delete;
    MXFragment& operator=(const MXFragment&) = delete;
    ~MXFragment() { RemoveChildren(); }

    /// Becomes the fragment that it takes from the front of the text. Returns MX_OK, or
    /// - MX_END_TAG, MX_DECLARATION: only blanks were taken,
    /// - MX_NOTHING, MX_OPEN_...: all was taken.
    ///
    /// What is read over is told to `remarks`, where there are any: attributes that cannot be read,
    /// end tags of another name or none, names that are none, references that are not resolved, and
    /// faults that end an element.
    int32 ParseString(MXString& text, Remarks* remarks = nullptr);
    /// Returns how many bytes of the text that this was read from were left where it begins; 0 for
    /// a fragment that was not read.
    std::size_t TextLeft() const { return textLeft; }

    /// Returns the compact form, on one line unless a text has several.
    MXString AssembleString() const;
    /// Returns the indented form: each tag has a line of its own, which begins with `indent` and
    /// one `unit` for each level. An element with at most one child, and that no element, is on one
    /// line.
    MXString AssembleString(MXString indent, MXString unit) const;
    /// Append what the two AssembleString return.
    void AppendTo(MXString& text) const;
    void AppendTo(MXString& text, const MXString& indent, const MXString& unit) const;

    /// Returns the fragments of this subtree, this one included, whose type is in `mask` and whose
    /// name is `name`, in document order.
    MXFragmentList FindFragment(long mask, MXString name);

    /// Appends a child, which becomes this fragment's. Returns 0, or -1 (and a fragment given by
    /// pointer stays the caller's) if there is no memory. The type stays, and only an element
    /// writes its children.
    int32 Add(MXString text);
    int32 Add(MXFragment* child);
    /// Does the same for building trees: returns the child, and throws bad_alloc if there is no
    /// memory.
    MXFragment& Adopt(std::unique_ptr<MXFragment> child);

    /// Returns the texts of this subtree, without those in comments and CDATA sections.
    MXString GetContainedText() const;

    long Type() const { return type; }

    /// The name of an element or an instruction; the text of a text, a comment or a CDATA section.
    MXString name;
    MXAttributeList attributes;
    Children children;

  private:
    friend class MXFragmentList;
    void RemoveChildren() noexcept;
    void CollectInto(MXFragmentList& found, long mask, const MXString& wanted);
    int32 ParseHead(MXString& text, Remarks* remarks);
    int32 ParseEnclosed(MXString& text, const char* opening, const char* closing, int32 enclosed,
                        int32 unclosed);
    int32 ParseInstruction(MXString& text);
    int32 ParseTag(MXString& text, Remarks* remarks);
    void AppendOpening(MXString& text) const;
    void AppendClosing(MXString& text) const;
    bool IsOneLine() const;

    long type;
    std::size_t textLeft = 0;
};

} // namespace vexa
