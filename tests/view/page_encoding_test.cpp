#include "view/page/page_encoding.h"

#include <gtest/gtest.h>

namespace quorvex::view {
namespace {

using namespace std::string_literals;

TEST(PageEncoding, IsWhatBrowsersTakeItFor) {
  const std::string far(1100, ' ');
  const std::string umlaut = "\xC3\xA4";
  const std::string none = "\xEF\xBF\xBD";
  struct Case {
    std::string bytes;
    std::string end;  ///< of the page, in UTF-8
  };
  for (const Case& test : {
           Case{umlaut, umlaut},
           {"\xE4\x80", umlaut + "\xE2\x82\xAC"},
           // A byte order mark outranks what is declared.
           {"\xEF\xBB\xBF<meta charset=latin1>" + umlaut, ">" + umlaut},
           {"\xEF\xBB\xBF"
            "a\xE4",
            "a" + none},
           {"\xFF\xFE"
            "a\0\xE4\0"s,
            "a" + umlaut},
           {"\xFE\xFF\0a\0\xE4\xD8"s, "a" + umlaut + none},
           {"\xFF\xFE\0\xD8"
            "a\0"s,
            none + "a"},
           {"<meta charset=utf-8>\xE4", ">" + none},
           {"<meta charset=\" Latin1 \">\x80" + umlaut, "\xE2\x82\xAC\xC3\x83\xC2\xA4"},
           {"<META content='text/html; CharSet = \"KOI8-R\"' http-equiv=Content-Type>\xC1",
            "\xD0\xB0"},
           {"<meta http-equiv=content-type content=text/html;charset=shift_jis;x>\x82\xA0|\x80",
            "\xE3\x81\x82|" + none},
           {"<meta charset=gb2312>\x81\x30\x81\x30\xB0\xA1", "\xC2\x80\xE5\x95\x8A"},
           {"<meta charset=iso-8859-9>\x80\xFD", "\xE2\x82\xAC\xC4\xB1"},
           {"<meta charset=iso-2022-jp>\x1B$B$\"\x1B(B.", "\xE3\x81\x82."},
           {"<?xml version='1.0' encoding='iso-8859-1'?>" + umlaut, "\xC3\x83\xC2\xA4"},
           // No declaration, or one without effect
           {"<!-- <meta charset=koi8-r> --><a title='<meta charset=koi8-r>'>" + umlaut, umlaut},
           {"<meta name=x content='charset=koi8-r'>" + umlaut, umlaut},
           {far + "<meta charset=koi8-r>" + umlaut, umlaut},
           {"<meta charset=bogus><meta charset=koi8-r>\xC1", "\xD0\xB0"},
           {"<meta charset=''>" + umlaut, umlaut},
           {"<meta charset=utf-16>" + umlaut, umlaut},
           // In these, tags could hide
           {"<meta charset=utf-7>+ADw-", "+ADw-"},
           {"<meta charset=hz-gb-2312>~{", "~{"},
           {"<meta charset=ibm037>abc", "abc"},
           {"<meta charset=scsu>" + umlaut, umlaut},
           {"<meta charset='latin1,swaplfnl'>" + umlaut, umlaut},
       }) {
    std::string converted;
    const std::string page(utf8Page(test.bytes, converted));
    ASSERT_GE(page.size(), test.end.size()) << test.bytes;
    EXPECT_EQ(page.substr(page.size() - test.end.size()), test.end) << test.bytes;
  }
}

TEST(PageEncoding, CopiesNoPageThatIsUtf8) {
  const std::string bytes = "\xEF\xBB\xBF<p>\xC3\xA4";
  std::string converted;
  EXPECT_EQ(utf8Page(bytes, converted).data(), bytes.data() + 3);
  EXPECT_EQ(utf8Page("\xFF\xFE", converted), "");
}

}  // namespace
}  // namespace quorvex::view
