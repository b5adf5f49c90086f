// Finding a command in the table of its family.
#pragma once

#include <QByteArray>
#include <algorithm>
#include <cstddef>

namespace QTD {

// The row whose `name` is `name` but for case, or null; a null name finds none.
template <typename Row, std::size_t count>
const Row* FindCommand(const Row (&table)[count], const char* name) {
  if (!name) return nullptr;
  const Row* const end = table + count;
  const Row* const row =
      std::find_if(table, end, [name](const Row& candidate) { return qstricmp(candidate.name, name) == 0; });
  return row == end ? nullptr : row;
}

}  // namespace QTD
