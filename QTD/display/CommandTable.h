// Finding a command in the table of its family.
#pragma once

#include <QByteArray>
#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

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

// The names of a family's commands.
template <typename Row, std::size_t count>
std::vector<std::string> CommandNames(const Row (&table)[count]) {
  std::vector<std::string> names;
  for (const Row& row : table) names.emplace_back(row.name);
  return names;
}

}  // namespace QTD
