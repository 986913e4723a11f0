#pragma once

#include <ROOT/REntry.hxx>
#include <ROOT/RNTupleFillContext.hxx>
#include <ROOT/RNTupleModel.hxx>
#include <ROOT/RNTupleParallelWriter.hxx>
#include <ROOT/RRawPtrWriteEntry.hxx>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "io/Origin.hpp"
#include "io/PairColumns.hpp"
#include "io/PendingFile.hpp"

namespace ZARN::IO {

/// A ROOT file with one RNTuple, which appears complete or not at all.
class NTupleFile {
 public:
  /// Rows that are filled one after the other. Different objects can be filled
  /// at the same time; Commit appends their rows to the RNTuple.
  class Rows {
   public:
    /// Where Fill finds the value of a field; valid as long as this.
    template <class Value>
    Value* Field(const std::string& name) {
      return Entry().GetPtr<Value>(name).get();
    }

    /// What Fill adds a row from.
    ROOT::REntry& Entry() {
      if (entry_ == nullptr) entry_ = context_->CreateEntry();
      return *entry_;
    }

    /// Add a row of the values of all fields.
    ///
    /// @throws OutputFailure if writing fails
    void Fill();

    /// An entry whose fields point to values of the caller, so that they need
    /// not be copied; and Fill for it.
    std::unique_ptr<ROOT::Detail::RRawPtrWriteEntry> MakeRawEntry() const {
      return context_->CreateRawPtrWriteEntry();
    }
    void Fill(ROOT::Detail::RRawPtrWriteEntry& entry);

    /// Compress and write the rows since the last call.
    ///
    /// @throws OutputFailure
    void Flush();

    /// Append the flushed rows to those that were committed before. One thread
    /// commits, while others may fill.
    ///
    /// @throws OutputFailure
    void Commit();

   private:
    friend class NTupleFile;
    Rows(const std::string& fileName,
         std::shared_ptr<ROOT::RNTupleFillContext> context);

    const std::string& fileName_;
    std::shared_ptr<ROOT::RNTupleFillContext> context_;
    std::unique_ptr<ROOT::REntry> entry_;  // null before Entry
  };

  /// @param path  a regular file, or a new name; ROOT needs to seek, which
  ///              pipes and devices cannot do
  /// @throws OutputFailure if the file cannot be created
  explicit NTupleFile(const std::string& path);
  ~NTupleFile();

  /// Define the RNTuple.
  ///
  /// @param name    of the RNTuple
  /// @param origin  becomes its description, as a JSON object
  /// @param model   its fields
  /// @throws OutputFailure
  void Begin(const std::string& name, const Origin& origin,
             std::unique_ptr<ROOT::RNTupleModel> model);
  bool HasBegun() const { return writer_ != nullptr; }

  /// New rows, after Begin; valid until Finish.
  ///
  /// @throws OutputFailure
  Rows& AddRows();

  /// Write buffered data. Rows that are not committed are lost.
  ///
  /// @throws OutputFailure
  void Finish();

  /// Move the finished file to its final name.
  ///
  /// @throws OutputFailure
  void Commit() { file_.Commit(); }

 private:
  PendingFile file_;
  std::string name_;  // in messages
  std::unique_ptr<ROOT::RNTupleParallelWriter> writer_;
  std::vector<std::unique_ptr<Rows>> rows_;
};

/// A field for names of events or PMTs, which are numbers or text.
class NameField {
 public:
  /// Define the field.
  static void AddTo(ROOT::RNTupleModel& model, const std::string& field,
                    bool isInteger);

  /// @param rows  must outlive this; their model has the field
  NameField(NTupleFile::Rows& rows, const std::string& field, bool isInteger);

  /// Set the value of the next row.
  ///
  /// @param name  IntegerOf must have a value if the field is one of integers
  void Set(std::string_view name);
  /// The same, if the field is one of integers.
  void Set(std::int64_t name) { *integer_ = name; }

 private:
  std::int64_t* integer_ = nullptr;
  std::string* text_ = nullptr;
};

/// The field of a column, and its value in the next row.
class ColumnField {
 public:
  /// @param column  must outlive this
  explicit ColumnField(const PairColumn* column);

  /// Define the field.
  void AddTo(ROOT::RNTupleModel& model) const;

  /// Let an entry of ROOT point to the value. This must then stay where it is.
  template <class Entry>
  void BindTo(Entry& entry) {
    const auto bind = [&](auto& value) {
      entry.BindRawPtr(entry.GetToken(column_->name), &value);
    };
    std::visit(bind, value_);
  }

  /// Set the value of the next row.
  void Set(const JudgedPair& pair);

 private:
  const PairColumn* column_;
  std::variant<double, std::int32_t, std::string> value_;
};

}  // namespace ZARN::IO
