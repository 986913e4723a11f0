#include "io/PieceText.hpp"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace ZARN::IO
