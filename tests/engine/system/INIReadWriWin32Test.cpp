#include <gtest/gtest.h>
#include <windows.h>

#include <array>

#include "engine/system/INIReadWri.h"
#include "support/TempFolder.h"

namespace slyver {
namespace {

/// The system's own profile calls, held against the program's ini access.
class ProfileCalls : public TempFolderTest {
 protected:
  std::string SystemReads(const char* section, const char* key) const {
    std::array<char, 50> buffer = {};
    const DWORD count = GetPrivateProfileStringA(section, key, "default", buffer.data(),
                                                 buffer.size(), File("system").c_str());
    return {buffer.data(), count};
  }
  std::string File(const char* name) const { return (folder / name).string(); }
};

TEST_F(ProfileCalls, ReadWhatTheProgramReads) {
  const std::string digits = "123456789012345678901234567890123456789012345678901234567890";
  std::vector<std::string> texts = {
      "",
      "[s]\r\nk=v\r\n",
      "[s]\r\nk=v",
      "[s]\nk=v\n",
      "[s]\nk=v",
      "[S]\r\nK=v\r\n",
      " [ s ] \r\n \tk \t= \tv w \r\n",
      "[s]\r\nk=\r\n",
      "[s]\r\nk=   \r\n",
      "[s]\r\nk\r\n",
      "[s]\r\nk",
      "[s]\r\nk=a=b;c\r\n",
      "[s]\r\nk=v ; no comment\r\n",
      "[s]\r\n;k=1\r\n ; k=2\r\nk=3\r\n",
      "; head\r\n[s]\r\n;k=1\r\n",
      "[s]\r\nk=1\r\nk=2\r\n",
      "[s]\r\na=1\r\n[s]\r\nk=2\r\n",
      "[s]\r\n[s]\r\nk=2\r\n",
      "k=1\r\n[t]\r\nk=2\r\n",
      "[t]\r\nk=1\r\n\r\n[s]\r\n\r\nk=2\r\n",
      "[s] text\r\nk=v\r\n",
      "[s]k=v\r\n",
      "=v\r\n[s]\r\n=w\r\n",
      "[]\r\nk=1\r\n[s]\r\n",
      "\r\n\r\n[s]\r\nk=1\r\n",
  };
  for (const char* value :
       {"\"v\"", "\"v \"", "' v'", "\"\"v\"\"", "\"v'", "'\"v'\"", "\"", "'", "\"\"", "''", "\"v",
        "v\"", " \"v\" ", "\"a\" b", "\"'v'\"", "\xE9\xFF\x80"})
    texts.push_back("[s]\r\nk=" + std::string(value) + "\r\n");
  for (const std::size_t length : {48U, 49U, 50U, 60U})
    texts.push_back("[s]\r\nk=" + digits.substr(0, length) + "\r\n");

  for (const std::string& text : texts) {
    WriteFile(File("system"), text);
    EXPECT_EQ(SystemReads("s", "k"), ReadIniValue(File("system"), "s", "k", "default")) << text;
    EXPECT_EQ(SystemReads(" S ", " K "), ReadIniValue(File("system"), " S ", " K ", "default"))
        << text;
    // What either has written the other reads. (Whether a later line counts behind a key without
    // "=" is up to the system's version.)
    if (text.starts_with("[s]\r\nk") && text.find('=') == std::string::npos) continue;
    for (const char* value : {"new", "", " blanks ", "\"quoted\"", "a=b;c"}) {
      EXPECT_TRUE(WriteIniValue(File("system"), "s", "k", value));
      EXPECT_EQ(SystemReads("s", "k"), ReadIniValue(File("system"), "s", "k", "")) << text << value;
      WriteFile(File("system"), text);
      EXPECT_TRUE(WritePrivateProfileStringA("s", "k", value, File("system").c_str()));
      EXPECT_EQ(SystemReads("s", "k"), ReadIniValue(File("system"), "s", "k", "")) << text << value;
      WriteFile(File("system"), text);
    }
  }
}

/// Texts as these calls write them: what else stands in a file, blank lines for one, some versions
/// of the calls keep and others throw out.
TEST_F(ProfileCalls, WriteTheBytesThatTheProgramWrites) {
  for (const char* text :
       {"", "[s]\r\nk=v\r\n", "[s]\r\nk=v", "[s]", "[s]\r\n", "[S]\r\nK=v\r\n", "[s]\r\nk=\r\n",
        "[s]\r\nk=\"v\"\r\n", "[s]\r\na=1\r\nk=2\r\nb=3\r\n", "[t]\r\nk=1", "[t]\r\nk=1\r\n[s]\r\n",
        "[s]\r\na=1\r\n[t]\r\nk=2\r\n", "[s]\r\nk=1\r\nk=2\r\n", "[s]\r\na=1\r\n[s]\r\nk=2\r\n",
        "[s]\r\na=1\r\n;note\r\n[t]\r\n", "; head\r\n[s]\r\n;k=1\r\n", "k=1\r\n[t]\r\nk=2\r\n",
        "[s]\r\nk=\xE9\xFF\x80\r\n"})
    for (const char* value : {"new", "", "\"quoted\"", "\"", "a=b;c", "in ner", "\xE9\xFF\x80"}) {
      WriteFile(File("system"), text);
      WriteFile(File("ours"), text);
      EXPECT_TRUE(WritePrivateProfileStringA("s", "k", value, File("system").c_str()));
      EXPECT_TRUE(WriteIniValue(File("ours"), "s", "k", value));
      EXPECT_EQ(ReadFile(File("system")), ReadFile(File("ours"))) << text << "\n" << value;
    }
}

TEST_F(ProfileCalls, MakeTheSameFileInTheSameSteps) {
  struct Step {
    const char *section, *key, *value;
  };
  for (const Step& step : {Step{"0dfg%", "&hed#", "7B"}, Step{"0dfg%", "?Kj*^", "0A"},
                           Step{"s@4)", "!`<jhbddfu", "77"}, Step{"s@4)", "&hed#", "0102"},
                           Step{"0dfg%", "&hed#", "7C7D"}, Step{"1dfg%", "&hed#", ""},
                           Step{"S@4)", "&HED#", "03"}, Step{"new", "key", "v"}}) {
    EXPECT_TRUE(
        WritePrivateProfileStringA(step.section, step.key, step.value, File("system").c_str()));
    EXPECT_TRUE(WriteIniValue(File("ours"), step.section, step.key, step.value));
    EXPECT_EQ(ReadFile(File("system")), ReadFile(File("ours"))) << step.section << step.key;
  }
}

}  // namespace
}  // namespace slyver
