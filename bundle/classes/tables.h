// bundle/classes/tables.h - the definition tables, built at compile time.
//
// A function pointer can't be turned into the records' untyped one in a constant expression, so a table is
// built of rows that keep each function's type and have the record's layout, and is handed out as an array of
// records.
#pragma once

#include <algorithm>

#include "bundle/host/records.h"
#include "bundle/platform/message.h"

namespace qvx {

template <typename Procedure>
struct MethodRow {
  Procedure* function;
  REALproc second;
  const char* declaration;
  std::uint32_t flags;
  std::uint32_t reserved[2];
};
static_assert(sizeof(MethodRow<void()>) == sizeof(REALmethodDefinition));

template <typename Procedure>
struct PropertyRow {
  const char* group;
  const char* name;
  const char* type;
  std::uint32_t flags;
  Procedure* getter;
  REALproc setter;
  std::uint32_t parameter;
  std::uint32_t reserved[5];
};
static_assert(sizeof(PropertyRow<void()>) == sizeof(REALproperty));

// A method, shared or not, as declared to the host.
template <typename Procedure>
constexpr MethodRow<Procedure> Method(Procedure* function, const char* declaration,
                                      std::uint32_t flags = kMethodFlags) {
  return {function, nullptr, declaration, flags, {}};
}

// A read-only property.
template <typename Procedure>
constexpr PropertyRow<Procedure> Property(Procedure* getter, const char* name, const char* type) {
  return {nullptr, name, type, kPropertyFlags, getter, nullptr, 0, {}};
}

constexpr REALconstant Constant(const char* declaration) {
  return {declaration, {}, {}};
}

// Rows of different types, one after the other in memory. A row may be a list of rows.
template <typename Row, typename... Others>
struct RowList {
  Row row;
  RowList<Others...> others;
};
template <typename Row>
struct RowList<Row> {
  Row row;
};

template <typename Row>
constexpr RowList<Row> Rows(Row row) {
  return {row};
}
template <typename Row, typename... Others>
requires(sizeof...(Others) > 0) constexpr RowList<Row, Others...> Rows(Row row, Others... others) {
  return {row, Rows(others...)};
}

template <typename Record, typename List>
union Table {
  static constexpr std::int32_t kCount = sizeof(List) / sizeof(Record);
  List rows;
  Record records[kCount];
};

template <typename Record, typename... List>
constexpr Table<Record, RowList<List...>> MakeTable(List... rows) {
  return {Rows(rows...)};
}

// "blackColor" and " as NSColorQVX" in one text.
template <FixedString First, FixedString Second>
inline constexpr auto kJoined = [] {
  struct {
    char text[sizeof First.text + sizeof Second.text - 1];
  } joined{};
  std::copy_n(First.text, sizeof First.text - 1, joined.text);
  std::copy_n(Second.text, sizeof Second.text, joined.text + sizeof First.text - 1);
  return joined;
}();

}  // namespace qvx
