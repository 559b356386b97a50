#include "engine/settings/INIReadWri.h"

#include <gtest/gtest.h>

#include "engine/disk/TargetFile.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

TEST_F(TempFolderTest, IniFilesHaveTheBytesThatTheProfileCallsWrite) {
  const auto file = folder / "3.ini";
  EXPECT_TRUE(WriteIniValue(file, "0dfg%", "&hed#", "7B"));
  EXPECT_EQ(ReadFile(file), "[0dfg%]\r\n&hed#=7B\r\n");
  EXPECT_TRUE(WriteIniValue(file, "s@4)", "!`<jhbddfu", "77"));
  EXPECT_TRUE(WriteIniValue(file, "0dfg%", "?Kj*^", "0A"));
  EXPECT_TRUE(WriteIniValue(file, "0dfg%", "&hed#", "7C"));
  EXPECT_EQ(ReadFile(file), "[0dfg%]\r\n&hed#=7C\r\n?Kj*^=0A\r\n[s@4)]\r\n!`<jhbddfu=77\r\n");
  {
    const auto other = LockFile(TemporaryPath(file));
    EXPECT_TRUE(WriteIniValue(file, "s@4)", "!`<jhbddfu", "78")) << "a failure goes unnoticed";
  }
  EXPECT_EQ(ReadIniValue(file, "s@4)", "!`<jhbddfu", ""), "77");
  EXPECT_TRUE(WriteIniValue(folder, "s", "k", "v"));
  const std::string digits = "123456789012345678901234567890123456789012345678901234567890";
  EXPECT_EQ(ReadIniValue(folder, "s", "k", digits), digits.substr(0, 49));
  EXPECT_EQ(ReadIniValue(folder / "none", "s", "k", digits), digits.substr(0, 49));
  EXPECT_TRUE(WriteIniValue(file, "s", "k", digits));
  EXPECT_EQ(ReadIniValue(file, "s", "k", ""), digits.substr(0, 49));
  EXPECT_EQ(IniText(ReadFile(file)).Value("s", "k"), digits) << "the text itself holds it whole";
}

TEST(IniText, FindsValues) {
  struct Case {
    std::string text, value;
  };
  const std::string none = "default";
  for (const Case& c :
       {Case{"", none}, Case{"[s]\r\nk=v\r\n", "v"}, Case{"[s]\nk=v", "v"},
        Case{"[S]\r\nK=v\r\n", "v"}, Case{" [ s ] \r\n \tk \t= \tv w \r\n", "v w"},
        // One pair of quotes.
        Case{"[s]\r\nk=\"v \"\r\n", "v "}, Case{"[s]\r\nk=' v'\r\n", " v"},
        Case{"[s]\r\nk=\"\"v\"\"\r\n", "\"v\""}, Case{"[s]\r\nk=\"v'\r\n", "\"v'"},
        Case{"[s]\r\nk=\"\r\n", "\""}, Case{"[s]\r\nk=\r\n", ""},
        Case{"[s]\r\nk=a=b;c\r\n", "a=b;c"},
        // The first counts, comments and other places do not.
        Case{"[s]\r\nk=1\r\nk=2\r\n", "1"}, Case{"[s]\r\na=1\r\n[s]\r\nk=2\r\n", none},
        Case{"[s]\r\n;k=1\r\n ; k=2\r\nk=3\r\n", "3"}, Case{"[s]\r\nk\r\n", none},
        Case{"k=1\r\n[t]\r\nk=2\r\n", none}, Case{"[s]k=1\r\n", none},
        Case{"[t]\r\nk=1\r\n\r\n[s]\r\n\r\nk=2\r\n", "2"},
        // The bracket may be missing; a zero ends the text.
        Case{"[s\r\nk=1\r\n", "1"}, Case{"[s] t]\r\nk=1\r\n", "1"},
        Case{std::string("[s]\r\nk=v\r\n\0\0\0", 13), "v"},
        Case{std::string("[s]\r\n\0k=v\r\n", 11), none}})
    EXPECT_EQ(IniText(c.text).Value("s", "k", none), c.value) << c.text;
}

TEST(IniText, PutsValuesInTheirPlace) {
  struct Case {
    std::string before, after;
  };
  for (const Case& c : {
           Case{"", "[s]\r\nk=v\r\n"},
           Case{"[t]\r\na=1", "[t]\r\na=1\r\n[s]\r\nk=v\r\n"},
           Case{"[s]", "[s]\r\nk=v\r\n"},
           Case{"[s]\r\na=1\r\n\r\n\r\n[t]\r\nk=2\r\n",
                "[s]\r\na=1\r\nk=v\r\n\r\n\r\n[t]\r\nk=2\r\n"},
           Case{"[s]\r\na=1\r\n;k=0\r\n[t]\r\n", "[s]\r\na=1\r\n;k=0\r\nk=v\r\n[t]\r\n"},
           Case{"; note\n[s]\nk = \"old\"\nb=2\n", "; note\n[s]\nk=v\r\nb=2\n"},
           Case{"[s]\r\nk=1\r\nk=2\r\n", "[s]\r\nk=v\r\nk=2\r\n"},
           Case{"[S]\r\n K =1\r\n", "[S]\r\nK=v\r\n"},  // the spelling stays
           Case{std::string("[s]\r\na=1\r\n\0\0", 12), "[s]\r\na=1\r\nk=v\r\n"},
       }) {
    IniText ini(c.before);
    ini.Set("s", "k", "v");
    EXPECT_EQ(ini.Text(), c.after);
    EXPECT_EQ(ini.Value("S", "K"), "v") << c.before;
  }
  IniText ini("[s]\r\na=1\r\nK=2\r\nb=3");
  EXPECT_TRUE(ini.Remove("s", "k"));
  EXPECT_FALSE(ini.Remove("s", "k"));
  EXPECT_EQ(ini.Text(), "[s]\r\na=1\r\nb=3");
}

}  // namespace
}  // namespace slyver
