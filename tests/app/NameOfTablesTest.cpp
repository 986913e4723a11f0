#include "app/NameOfTables.hpp"

#include <gtest/gtest.h>

#include <string>

namespace ZARN::App {
namespace {

std::string NameOf(const std::string& source) {
  return NameOfTables({source, "", std::nullopt});
}

TEST(NameOfTables, IsThatOfTheFileOrFolder) {
  EXPECT_EQ(NameOf("data/detector"), "detector");
  EXPECT_EQ(NameOf("data/detector/"), "detector");
  EXPECT_EQ(NameOf("data/detector.json"), "detector");
  EXPECT_EQ(NameOf("sqlite:data/detector.db"), "detector");
  EXPECT_EQ(NameOf("sqlite:detector.v2"), "detector.v2");
}

TEST(NameOfTables, IsThatOfTheDatabaseOfAServer) {
  EXPECT_EQ(NameOf("postgresql:host=db.lab dbname=detector user=ada"),
            "detector");
  EXPECT_EQ(NameOf("postgresql:dbname=detector"), "detector");
  EXPECT_EQ(NameOf("postgresql://ada@db.lab/detector?sslmode=require"),
            "detector");
  EXPECT_EQ(NameOf("postgresql://db.lab"), "PostgreSQL");
  EXPECT_EQ(NameOf("postgresql:service=detector"), "PostgreSQL");
}

TEST(NameOfTables, SaysWhatIsLaidOverAndTheTime) {
  EXPECT_EQ(NameOfTables({"sqlite:a.db", "plan.json", "2026-01-31"}),
            "a as of 2026-01-31 with plan");
}

}  // namespace
}  // namespace ZARN::App
