// Documents in the parser: where it ends, the text that it keeps, and its message for a fault.
#include <gtest/gtest.h>

#include <sstream>

#include "support/case_file.h"
#include "support/page_text.h"
#include "xml/xml_source_location.h"
#include "xml/xml_test.h"
#include "xml/xml_writer.h"

namespace {

using test::Utf8;

// "RESULT CODE-PAGE DOCUMENT", or with the fault in the place of a document that is broken.
std::string Outcome(const std::string& bytes) {
    TXmlDoc doc;
    std::string thrown;
    try {
        test::Parse(doc, bytes);
    } catch (const UnicodeString& message) {
        thrown = "threw ";
    }
    const std::string head =
        std::to_string(doc.ParseResult()) + ' ' + std::to_string(doc.CodePage) + ' ' + thrown;
    EXPECT_EQ(doc.ParseResult() > 0, doc.Fault().IsEmpty()) << bytes;
    if (doc.ParseResult() <= 0)
        return head +
               Utf8(DescribeXmlFault(doc, bytes.data(), static_cast<int>(bytes.size()), nullptr));
    doc.CodePage = System::kCodePageUtf8;
    TXmlFormatter plain;
    return head + Utf8(doc.FRoot->SaveToString(plain)) + Utf8(doc.FRoot->FTail);
}

TEST(XmlDocuments, AreReadAsTheFileOfCasesSays) {
    std::istringstream lines(test::PageText("../tests/xml/documents.txt"));
    int documents = 0;
    for (std::string line, outcome; std::getline(lines, line);) {
        if (!line.starts_with("> ")) continue;
        ASSERT_TRUE(std::getline(lines, outcome)) << line;
        EXPECT_EQ(Outcome(test::Unescaped(line.substr(2))), test::Unescaped(outcome)) << line;
        ++documents;
    }
    EXPECT_GT(documents, 100);
}

}  // namespace
