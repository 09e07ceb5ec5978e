// The DOM wrapper and the text functions.
#include <gtest/gtest.h>

#include <vector>

#include <limits>

#include "host/cf/CFErrorChannel.h"
#include "host/cf/CFSysmis.h"
#include "host/xml/SDOMXMLWrapper.h"
#include "host/xml/XMLText.h"

TEST(XMLText, SplitsAtAnyWhitespace) {
    std::vector<std::string> words{"kept"};
    SplitToToken(" 1.5\t__MISSING__\n 3\r\n", words);
    EXPECT_EQ(words, (std::vector<std::string>{"kept", "1.5", "__MISSING__", "3"}));
    words.clear();
    SplitToToken(" \t\n", words);
    EXPECT_TRUE(words.empty());
}

TEST(XMLText, ConvertsNumbers) {
    EXPECT_DOUBLE_EQ(String2Double("1.5"), 1.5);
    EXPECT_DOUBLE_EQ(String2Double(" -2e3 "), -2000.0);
    EXPECT_DOUBLE_EQ(String2Double("+0.25"), 0.25);
    EXPECT_EQ(String2Double("abc"), kCFSysmis);
    EXPECT_EQ(String2Double("__missing__"), kCFSysmis);
    EXPECT_EQ(String2Double("1.5x"), kCFSysmis);
    EXPECT_EQ(String2Integer("abc"), 0);
    // Too large for a double: missing (with a warning, told once); too small:
    // zero.
    CFErrorChannel::Clear();
    EXPECT_EQ(String2Double("1e999"), kCFSysmis);
    EXPECT_EQ(String2Double("-1e999"), kCFSysmis);
    EXPECT_EQ(String2Double("1e-999"), 0.0);
    ASSERT_EQ(CFErrorChannel::Messages().size(), 1u);
    EXPECT_EQ(CFErrorChannel::Messages()[0].fKind, CFMessage::kWarning);
    CFErrorChannel::Clear();
    EXPECT_EQ(String2Integer("42"), 42);
    EXPECT_EQ(String2Integer("-7"), -7);
    EXPECT_EQ(String2Integer("3.9"), 3);
    EXPECT_EQ(String2Integer("99999999999"), std::numeric_limits<int>::max());
    EXPECT_EQ(String2Integer(""), 0);
    EXPECT_EQ(TruncateToInt(-std::numeric_limits<double>::max()), std::numeric_limits<int>::min());
    EXPECT_EQ(TruncateToInt(std::numeric_limits<double>::quiet_NaN()),
              std::numeric_limits<int>::min());
    EXPECT_EQ(TruncateToInt(-2.7), -2);
}

TEST(SDOMXMLWrapper, NavigatesPathsAndIterates) {
    SDOMXMLWrapper root;
    ASSERT_TRUE(root.LoadFromString(
        "<R a='1' d='2.5' s='x'><A><B id='1'/><B id='2'/><C/>text</A><A/></R>"));
    EXPECT_EQ(root.GetName(), "R");
    int i = -1;
    double d = 0;
    std::string s;
    EXPECT_TRUE(root.GetAttribute("a", i));
    EXPECT_EQ(i, 1);
    EXPECT_TRUE(root.GetAttribute("d", d));
    EXPECT_DOUBLE_EQ(d, 2.5);
    EXPECT_FALSE(root.GetAttribute("missing", i));
    EXPECT_EQ(i, 1);

    SDOMXMLWrapper b;
    ASSERT_TRUE(root.GetFirstElement("A/B", b));
    ASSERT_TRUE(b);
    ASSERT_TRUE(b.GetAttribute("id", s));
    EXPECT_EQ(s, "1");
    EXPECT_TRUE(root.GetFirstElement("A/Z", b));
    EXPECT_FALSE(b);
    EXPECT_FALSE(root.GetFirstElement("A//B", b));

    SDOMXMLIterator it;
    ASSERT_TRUE(root.GetElementIterator("A/B", it));
    int count = 0;
    SDOMXMLWrapper e;
    while (it.Next(e)) {
        ++count;
    }
    EXPECT_EQ(count, 2);

    SDOMXMLWrapper a;
    root.GetFirstElement("A", a);
    ASSERT_TRUE(a.GetElementIterator("", it));
    std::string names;
    while (it.Next(e)) {
        names += e.GetName();
    }
    EXPECT_EQ(names, "BBC");
    EXPECT_TRUE(a.GetTextBody(s));
    EXPECT_EQ(s, "text");

    ASSERT_TRUE(root.GetElementIterator("Nothing/B", it));
    EXPECT_FALSE(it.Next(e));
}

TEST(SDOMXMLWrapper, TextBodyIsTheFirstTextOrCdata) {
    SDOMXMLWrapper root;
    ASSERT_TRUE(root.LoadFromString("<R><T>1 2</T><T><![CDATA[3]]>4</T><T>5<x/>6</T><T> </T>"
                                    "<T><x/>7</T><T/></R>"));
    SDOMXMLIterator it;
    ASSERT_TRUE(root.GetElementIterator("T", it));
    std::vector<std::string> texts;
    SDOMXMLWrapper t;
    while (it.Next(t)) {
        ASSERT_TRUE(t.GetTextBody(texts.emplace_back()));
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"1 2", "3", "5", " ", "7", ""}));
}

TEST(SDOMXMLWrapper, RejectsMalformedText) {
    SDOMXMLWrapper root;
    EXPECT_FALSE(root.LoadFromString("<a><b></a>"));
    EXPECT_FALSE(root.Error().empty());
    EXPECT_FALSE(root.LoadFromString(""));
    EXPECT_FALSE(root);
    std::string s;
    EXPECT_FALSE(root.GetAttribute("x", s));
    SDOMXMLIterator it;
    EXPECT_FALSE(root.GetElementIterator("", it));
}
