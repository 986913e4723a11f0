#include "io/PieceText.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

namespace ZARN::IO {
namespace {

TEST(PieceText, JoinsPiecesOfAnyLengthAndNumbers) {
  PieceText text;
  EXPECT_EQ(text.Text(), "");
  std::string wanted;
  for (const std::size_t length : {0U, 1U, 15U, 16U, 17U, 100U, 5000U}) {
    const PieceText::Piece piece(std::string(length, 'x'));
    EXPECT_EQ(piece.Text().size(), length);
    text.Reserve(2 * length);
    text.Append<16>(piece.Text());
    text.Append<64>(piece.Text());
    text.Append(',');
    text.AppendNumber(-0.1);
    wanted += std::string(2 * length, 'x') + ",-0.1";
    EXPECT_EQ(text.Text(), wanted);
  }
  text.Clear();
  text.Append('\n');
  EXPECT_EQ(text.Text(), "\n");
}

TEST(PieceText, AppendsTextsAndWholeNumbers) {
  PieceText text;
  text.AppendText("");
  EXPECT_EQ(text.Text(), "");
  const std::string longText(5000, 'x');
  text.AppendText(longText);
  text.AppendNumber(std::numeric_limits<std::uint64_t>::max());
  text.AppendText("a,b");
  text.AppendNumber(std::uint64_t{0});
  EXPECT_EQ(text.Text(), longText + "18446744073709551615a,b0");
}

}  // namespace
}  // namespace ZARN::IO
