// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/TemporaryFolder.h"
#include "xml/MXDocument.h"
#include "xml/MXStatus.h"

#include <gtest/gtest.h>

namespace {

using namespace vexa;
using test::Contents;
using test::TemporaryFolder;

struct Parsed {
    const char* text;
    int32 status;
    const char* written;
};

TEST(MXDocument, SortsThePartsAndWritesThemInItsOwnOrder) {
    for (const auto& [text, status, written] : {
             Parsed{"<?xml version=\"1.0\"?>\n<!DOCTYPE a SYSTEM \"x\">\n<a>t</a>\n", 0,
                    "<?xml version=\"1.0\"?>\n<!DOCTYPE a SYSTEM \"x\">\n\n<a>t</a>\n"},
             Parsed{"", 0, "\n"},
             Parsed{"  ", -9, "\n"},
             Parsed{"<a>1</a><b>2</b>", 0, "\n<b>2</b>\n"},
             Parsed{"<!-- c --><a/>", 0, "<!-- c -->\n<a/>\n\n"},
             Parsed{"<a></a>after<!--c-->", 0, "after\n<!--c-->\n\n<a></a>\n"},
             Parsed{"</a>", -2, "\n"},
             Parsed{"<a></a></a>", -2, "\n<a></a>\n"},
             Parsed{"<!DOCTYPE a [x]><!DOCTYPE a x><b>", -1, "<!DOCTYPE a [x]>\n\n"},
             Parsed{"<?xml a=\"1\"?><?other?><?xml b=\"2\"?>", 0, "<?xml b=\"2\"?>\n<?other?>\n\n"},
             Parsed{"<!-- open", -5, "\n"},
         }) {
        MXString given(text);
        const MXDocument document(given);
        EXPECT_EQ(document.Status(), status) << text;
        EXPECT_STREQ(document.AssembleString("  ").String(), written) << text;
    }
}

TEST(MXDocument, WritesAFileAndReadsItBack) {
    const TemporaryFolder folder;
    const std::string path = folder.Path() / "a.xml";
    MXDocument document("r", "SYSTEM", "dtd");
    document.root = std::make_unique<MXFragment>("r", "x & y");
    document.root->Add(new MXFragment("c", "z"));
    ASSERT_EQ(document.WriteFile(path.c_str(), "\t"), 0);
    EXPECT_EQ(Contents(path), "<?xml version=\"1.0\"?>\n<!DOCTYPE r SYSTEM \"dtd\">\n\n"
                              "<r>\n\tx &amp; y\n\t<c>z</c>\n</r>\n");
    const MXDocument read(path.c_str());
    EXPECT_EQ(read.OpenError(), "");
    EXPECT_STREQ(read.AssembleString("\t").String(), Contents(path).c_str());
}

TEST(MXDocument, SaysWhatWasWrongWithAFile) {
    const TemporaryFolder folder;
    const std::string missing = folder.Path() / "none" / "a.xml";
    const MXDocument absent(missing.c_str());
    EXPECT_EQ(absent.root, nullptr);
    EXPECT_NE(absent.OpenError().find("none/a.xml: No such file or directory"), std::string::npos)
        << absent.OpenError();
    const MXDocument directory(folder.Path().c_str());
    EXPECT_NE(directory.OpenError().find("a folder, not a file"), std::string::npos);

    MXDocument document("r", "SYSTEM", "dtd");
    EXPECT_EQ(document.WriteFile(missing.c_str(), ""), -1);
    EXPECT_NE(document.WriteError().find("No such file"), std::string::npos);
    EXPECT_EQ(folder.Count(), 0U);
}

TEST(MXDocument, AZeroByteCutsOffItsPieceOfTheFile) {
    const TemporaryFolder folder;
    std::string text = "<a>1\n";
    text += std::string("2\0lost\n", 7);
    // A line in two pieces, 1023 bytes and the rest: only the first one is cut.
    text += std::string(1000, '3') + '\0' + std::string(22, 'x') + "4\n";
    text += "</a>";
    const std::string path = folder.Write("a.xml", text);
    const MXDocument document(path.c_str());
    ASSERT_TRUE(document.root);
    EXPECT_EQ(std::string(document.root->GetContainedText().String()),
              "1\n2" + std::string(1000, '3') + "4");
}

TEST(MXStatus, EachHasWordsOfItsOwn) {
    for (int32 status = MX_BAD_DOCTYPE; status <= MX_OK; status++) {
        EXPECT_STRNE(StatusText(status), StatusText(1)) << status;
        EXPECT_STRNE(StatusText(status), StatusText(status - 1)) << status;
    }
}

} // namespace
