#include <gtest/gtest.h>
#include <windows.h>

#include <array>

#include "engine/settings/INIReadWri.h"
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
  std::vector<std::string> texts = {"",
                                    "[s]\r\nk=v",
                                    " [ s ] \n \tk \t= \tv w \r\n",
                                    "[s]\r\nk\r\n",
                                    "[s]\r\n;k=1\r\n ; k=2\r\nk=3\r\n",
                                    "[s]\r\nk=1\r\nk=2\r\n",
                                    "[s]\r\n[s]\r\nk=2\r\n",
                                    "[t]\r\nk=1\r\n\r\n[S]\r\n\r\nK=2\r\n",
                                    "[s] text\r\nk=v\r\n",
                                    "[s]k=v\r\n",
                                    "=v\r\n[s]\r\n=w\r\n"};
  for (const char* value : {"   ", "a=b;c", "v ; no comment", "\"v \"", "' v'", "\"\"v\"\"", "\"v'",
                            "'\"v'\"", "\"", "\"\"", "v\"", "\"a\" b", "\xE9\xFF\x80",
                            "a value of more characters than those 49 that are read"})
    texts.push_back("[s]\r\nk=" + std::string(value) + "\r\n");
  for (const std::string& text : texts) {
    WriteFile(File("system"), text);
    EXPECT_EQ(SystemReads("s", "k"), ReadIniValue(File("system"), "s", "k", "default")) << text;
    EXPECT_EQ(SystemReads(" S ", " K "), ReadIniValue(File("system"), " S ", " K ", "default"))
        << text;
  }
}

/// Texts as these calls write them: what else stands in a file, blank lines for one, some versions
/// of the calls keep and others throw out.
TEST_F(ProfileCalls, WriteTheBytesThatTheProgramWrites) {
  for (const char* text : {"", "[s]\r\nk=v", "[S]\r\na=1\r\nK=2\r\nb=3\r\n", "[t]\r\nk=1",
                           "[s]\r\na=1\r\n[t]\r\nk=2\r\n", "[s]\r\na=1\r\n;note\r\n[t]\r\n"})
    for (const char* value : {"new", "", "\"quoted\"", "\"", "a=b;c", "in ner", "\xE9\xFF\x80"}) {
      WriteFile(File("system"), text);
      WriteFile(File("ours"), text);
      EXPECT_TRUE(WritePrivateProfileStringA("s", "k", value, File("system").c_str()));
      EXPECT_TRUE(WriteIniValue(File("ours"), "s", "k", value));
      EXPECT_EQ(ReadFile(File("system")), ReadFile(File("ours"))) << text << "\n" << value;
    }
}

}  // namespace
}  // namespace slyver
