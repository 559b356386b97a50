#include "engine/split/PieceName.h"

#include <gtest/gtest.h>

namespace slyver {
namespace {

TEST(PieceName, IsTheNameTheNumberAndTheExtension) {
  EXPECT_EQ(PieceNameOf("report.doc", 1), "report.doc.1.sly");
  EXPECT_EQ(PieceNameOf("my file.v1.doc", 32767), "my file.v1.doc.32767.sly");
}

TEST(PieceName, LeadsBackToTheOriginalName) {
  struct Case {
    const char* pieceName;
    const char* origName;
  };
  for (const Case& c :
       {Case{"a.txt.7.sly", "a.txt"}, Case{"a.txt.12.sly", "a.txt"},
        Case{"my file.v1.tar.gz.12345.sly", "my file.v1.tar.gz"}, Case{"a.123456.sly", "a"},
        Case{"A.1.SLY", "A"}, Case{"a.1.sly.2.sly", "a.1.sly"}, Case{"1.2.3.sly", "1.2"}})
    EXPECT_EQ(OrigNameOf(c.pieceName), c.origName) << c.pieceName;
  for (const char* name : {"a.1234567.sly", "a.txt", "a.1.sly2", "a.sly", ".1.sly", "sly", ""})
    EXPECT_EQ(OrigNameOf(name), std::nullopt) << name;
}

TEST(PieceName, GivesTheNumberOfThePiecesOfOneFileAlone) {
  struct Case {
    const char* fileName;
    int number;
  };
  for (const Case& c :
       {Case{"a.txt.1.sly", 1}, Case{"a.txt.10.SLY", 10}, Case{"a.txt.99999.sly", 99999},
        Case{"a.txt.100000.sly", 0}, Case{"a.txt.01.sly", 0}, Case{"a.txt.0.sly", 0},
        Case{"a.txt..sly", 0}, Case{"a.txt.-1.sly", 0}, Case{"a.txt.+1.sly", 0},
        Case{"a.txt. 1.sly", 0}, Case{"a.txt.1 .sly", 0}, Case{"a.txt.1x.sly", 0},
        Case{"a.txt.1.2.sly", 0}, Case{"a.txt1.sly", 0}, Case{"b.txt.1.sly", 0},
        Case{"aa.txt.1.sly", 0}, Case{"A.txt.1.sly", 0}, Case{"a.txt.1.txt", 0}, Case{"a.txt", 0}})
    EXPECT_EQ(PieceNumberOf(c.fileName, "a.txt"), c.number) << c.fileName;
}

}  // namespace
}  // namespace slyver
