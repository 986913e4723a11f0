#include "db/ReadField.hpp"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace ZARN {
namespace {

using Numbers = std::vector<double>;

class ReadFieldsTest : public testing::Test {
 protected:
  ReadFieldsTest() {
    TableEntry entry;
    entry.table = "SOLID";
    entry.index = "rope";
    entry.fields = {
        {"number", 12.5}, {"numbers", Numbers{1, 2}}, {"text", "a name"}};
    tables_.Add({entry});
  }

  TableSet tables_;
};

TEST_F(ReadFieldsTest, ReturnsFieldsOfEachType) {
  EXPECT_EQ(ReadNumber(tables_, "SOLID", "rope", "number"), 12.5);
  EXPECT_EQ(ReadNumbers(tables_, "SOLID", "rope", "numbers"), (Numbers{1, 2}));
  EXPECT_EQ(ReadString(tables_, "SOLID", "rope", "text"), "a name");
}

TEST_F(ReadFieldsTest, RefusesFieldsOfAnotherType) {
  for (const char* field : {"numbers", "text"}) {
    EXPECT_THROW(ReadNumber(tables_, "SOLID", "rope", field), DBNotFoundError);
  }
  for (const char* field : {"number", "text"}) {
    EXPECT_THROW(ReadNumbers(tables_, "SOLID", "rope", field), DBNotFoundError);
  }
  for (const char* field : {"number", "numbers"}) {
    EXPECT_THROW(ReadString(tables_, "SOLID", "rope", field), DBNotFoundError);
  }
}

TEST_F(ReadFieldsTest, RefusesMissingFieldsEntriesAndTables) {
  EXPECT_THROW(ReadNumber(tables_, "SOLID", "rope", "length"), DBNotFoundError);
  EXPECT_THROW(ReadNumber(tables_, "SOLID", "ropes", "number"),
               DBNotFoundError);
  EXPECT_THROW(ReadNumber(tables_, "GEO", "rope", "number"), DBNotFoundError);
}

TEST_F(ReadFieldsTest, NamesTheFieldIfTheEntryIsMissing) {
  try {
    ReadString(tables_, "GEO", "rope", "solid");
    FAIL() << "no error";
  } catch (const DBNotFoundError& error) {
    EXPECT_STREQ(error.what(),
                 "table GEO, index rope: there is no entry for run 0, so no "
                 "field solid");
  }
}

TEST_F(ReadFieldsTest, TakesTheHighestPass) {
  TableEntry entry;
  entry.table = "SOLID";
  entry.index = "rope";
  entry.pass = 3;
  entry.fields["number"] = 99.0;
  tables_.Add({entry});
  EXPECT_EQ(ReadNumber(tables_, "SOLID", "rope", "number"), 99.0);
  // Only the entry with the highest pass is used: missing fields are not taken
  // from a lower pass.
  EXPECT_THROW(ReadString(tables_, "SOLID", "rope", "text"), DBNotFoundError);
}

TEST_F(ReadFieldsTest, DistinguishesNumbersFromOtherFields) {
  EXPECT_TRUE(IsNumber(tables_, "SOLID", "rope", "number"));
  EXPECT_FALSE(IsNumber(tables_, "SOLID", "rope", "numbers"));
  EXPECT_FALSE(IsNumber(tables_, "SOLID", "rope", "text"));
  EXPECT_THROW(IsNumber(tables_, "SOLID", "rope", "length"), DBNotFoundError);
}

TEST(DBValueError, NamesTheField) {
  EXPECT_STREQ(DBValueError("SOLID", "rope", "r_rope", "is negative").what(),
               "table SOLID, index rope: the field r_rope is negative");
}

}  // namespace
}  // namespace ZARN
