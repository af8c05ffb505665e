// SPDX-License-Identifier: GPL-3.0-or-later
// One node of a document's tree, with its subtree.
#pragma once

#include "xml/MXAttributeList.h"
#include "xml/MXFragmentList.h"
#include "xml/Remarks.h"

#include <list>
#include <memory>

namespace vexa {

/// The types of fragments. A search combines several of them in a mask.
enum : long {
    MX_UNPARSED = -1,
    MX_ELEMENT = 1,
    MX_EMPTY_ELEMENT = 2,
    MX_PROCESSING_INSTRUCTION = 4,
    MX_COMMENT = 8,
    MX_TEXT = 16,
    MX_CDATA = 32,
};

/// Reads and writes this dialect of XML: a tag ends at its first ">"; attribute values are in
/// double quotes; blanks around a text are dropped; comments and CDATA sections are kept unchanged;
/// the name of an end tag is ignored; and a fault inside an element ends that element, after which
/// reading continues.
///
/// A tree may have any depth and size: no operation recurses, and each takes time proportional to
/// the text or the tree. A fragment owns its children. Any thread, one at a time per tree.
class MXFragment {
  public:
    /// A linked list, because its entries can be moved to another list without an allocation.
    using Children = std::list<std::unique_ptr<MXFragment>>;

    explicit MXFragment(long type) : type(type) {}
    MXFragment(long type, MXString name) : name(std::move(name)), type(type) {}
    /// Makes a fragment with the attributes in `attributeText` up to the first invalid one.
    MXFragment(long type, MXString name, MXString attributeText);
    /// Makes an element with one text child.
    MXFragment(MXString name, MXString attributeText, MXString text);
    MXFragment(MXString name, MXString text) : MXFragment(std::move(name), {}, std::move(text)) {}
    /// Reads the text with ParseString; the type is MX_UNPARSED if that fails.
    explicit MXFragment(MXString& text) : type(MX_UNPARSED) { ParseString(text); }
    MXFragment(const MXFragment&) = delete;
    MXFragment& operator=(const MXFragment&) = delete;
    ~MXFragment() { RemoveChildren(); }

    /// Reads one fragment from the front of the text into this object and removes it from the text.
    /// Returns MX_OK, or
    /// - MX_END_TAG, MX_DECLARATION: only blanks were removed,
    /// - MX_NOTHING, MX_OPEN_...: the whole text was removed.
    ///
    /// Everything that is ignored adds a remark to `remarks`, unless it is null: unreadable
    /// attributes, end tags that are missing or have another name, invalid names, unresolved
    /// references, and faults that end an element.
    int32 ParseString(MXString& text, Remarks* remarks = nullptr);
    /// Returns the number of bytes from the beginning of this fragment to the end of the text that
    /// it was read from; 0 if it was not read from a text.
    std::size_t TextLeft() const { return textLeft; }

    /// Returns the compact form, on one line unless a text contains line feeds.
    MXString AssembleString() const;
    /// Returns the indented form: each tag has its own line, which begins with `indent` and one
    /// `unit` per level. An element without children, or whose only child is not an element, is on
    /// one line.
    MXString AssembleString(MXString indent, MXString unit) const;
    /// Append the texts that the two AssembleString return.
    void AppendTo(MXString& text) const;
    void AppendTo(MXString& text, const MXString& indent, const MXString& unit) const;

    /// Returns the fragments of this subtree, this one included, whose type is in `mask` and whose
    /// name is `name`, in document order.
    MXFragmentList FindFragment(long mask, MXString name);

    /// Append a child and take ownership of it. Return 0, or -1 if the child is null or memory is
    /// exhausted; the caller then keeps the ownership. The type remains unchanged, and only an
    /// MX_ELEMENT writes its children.
    int32 Add(MXString text);
    int32 Add(MXFragment* child);
    /// Does the same, but returns the child, which suits the building of trees, and throws
    /// bad_alloc if memory is exhausted.
    MXFragment& Adopt(std::unique_ptr<MXFragment> child);

    /// Returns the concatenated texts of this subtree, without comments and CDATA sections.
    MXString GetContainedText() const;

    long Type() const { return type; }

    /// The name of an element or instruction, or the content of a text, comment or CDATA section.
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
