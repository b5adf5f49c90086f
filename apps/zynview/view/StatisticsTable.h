// The figures of each colour.
#pragma once

#include <QTableWidget>

#include "analysis/Analysis.h"

namespace zynview {

// A column for each colour. It takes no keys from the display.
class StatisticsTable : public QTableWidget {
 public:
  explicit StatisticsTable(QWidget* parent = nullptr);

  void Show(const Analysis& analysis);
  QString Cell(int line, int column) const;  // empty where there is none

 private:
  void Put(int line, int column, const QString& text);
};

}  // namespace zynview
