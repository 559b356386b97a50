#include "engine/split/PieceName.h"

#include "engine/split/Scene.h"

namespace slyver {
namespace {

TEST(PieceName, LeadsBackToTheOriginalName) {
  EXPECT_EQ(PieceNameOf("my file.v1.doc", 32767), "my file.v1.doc.32767.sly");
  EXPECT_EQ(OrigNameOf("my file.v1.doc.32767.sly"), "my file.v1.doc");
  for (const auto& [name, original] :
       PairsIn("a.txt.7.sly=a.txt a.123456.sly=a A.1.SLY=A a.1.sly.2.sly=a.1.sly 1.2.3.sly=1.2 "
               "a.1234567.sly= a.txt= a.1.sly2= a.sly= .1.sly= sly= ="))
    EXPECT_EQ(OrigNameOf(name).value_or(""), original) << name;
}

TEST(PieceName, GivesTheNumberOfThePiecesOfOneFileAlone) {
  for (const auto& [name, number] :
       PairsIn("a.txt.1.sly=1 a.txt.10.SLY=10 a.txt.99999.sly=99999 a.txt.100000.sly=0 "
               "a.txt.01.sly=0 a.txt.0.sly=0 a.txt..sly=0 a.txt.-1.sly=0 a.txt.+1.sly=0 "
               "a.txt.1x.sly=0 a.txt.1.2.sly=0 a.txt1.sly=0 b.txt.1.sly=0 aa.txt.1.sly=0 "
               "A.txt.1.sly=0 a.txt.1.txt=0 a.txt=0"))
    EXPECT_EQ(PieceNumberOf(name, "a.txt"), std::stoi(number)) << name;
  for (const auto& [name, original] : PairsIn("a.sly=a.sly a.sly=a.sl a.sly=a.s a.1.sly=a.1.sly"))
    EXPECT_EQ(PieceNumberOf(name, original), 0) << original;
}

}  // namespace
}  // namespace slyver
