#include "view/StatisticsTable.h"

#include <QHeaderView>
#include <iterator>

#include "view/ChannelColors.h"

namespace zynview {

namespace {

struct Row {
  const char* name;
  QString (*text)(const Statistics::Row& figures, const Histogram::Curve& curve);
};

const Row kRows[] = {
    {"Count",
     [](const Statistics::Row& figures, const Histogram::Curve&) { return QString::number(figures.count); }},
    {"Mean", [](const Statistics::Row& figures,
                const Histogram::Curve&) { return QString::number(figures.Mean(), 'f', 2); }},
    {"Deviation", [](const Statistics::Row& figures,
                     const Histogram::Curve&) { return QString::number(figures.Deviation(), 'f', 2); }},
    {"Minimum", [](const Statistics::Row& figures,
                   const Histogram::Curve&) { return QString::number(figures.minimum); }},
    {"Maximum", [](const Statistics::Row& figures,
                   const Histogram::Curve&) { return QString::number(figures.maximum); }},
    {"At 0",
     [](const Statistics::Row&, const Histogram::Curve& curve) { return QString::number(curve.AtBottom()); }},
    {"At %1",
     [](const Statistics::Row&, const Histogram::Curve& curve) { return QString::number(curve.AtTop()); }},
};
constexpr int kLines = static_cast<int>(std::size(kRows));

}  // namespace

StatisticsTable::StatisticsTable(QWidget* parent) : QTableWidget(kLines, 0, parent) {
  setFocusPolicy(Qt::NoFocus);
  setSelectionMode(QAbstractItemView::NoSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
  verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
  for (QHeaderView* header : {horizontalHeader(), verticalHeader()}) header->setSectionsClickable(false);
}

void StatisticsTable::Show(const Analysis& analysis) {
  const std::vector<Statistics::Row>& rows = analysis.statistics.Rows();
  const std::vector<Histogram::Curve>& curves = analysis.histogram.Curves();
  const auto columns = static_cast<int>(rows.size());
  if (columnCount() != columns) setColumnCount(columns);
  QStringList lines, names;
  for (const Row& row : kRows) {
    const QString name = QString::fromLatin1(row.name);
    lines << (name.contains(QLatin1Char('%')) ? name.arg((1 << analysis.depth) - 1) : name);
  }
  for (const Statistics::Row& figures : rows) names << ChannelName(figures.kind);
  setVerticalHeaderLabels(lines);
  setHorizontalHeaderLabels(names);
  for (int column = 0; column < columns; ++column) {
    const auto index = static_cast<std::size_t>(column);
    // Without a sample there is neither a mean nor a least one.
    const bool any = rows[index].count > 0;
    for (int line = 0; line < kLines; ++line)
      Put(line, column, any || line == 0 ? kRows[line].text(rows[index], curves[index]) : QString());
  }
  setFixedHeight(horizontalHeader()->sizeHint().height() + verticalHeader()->length() + 2 * frameWidth());
}

QString StatisticsTable::Cell(int line, int column) const {
  const QTableWidgetItem* cell = item(line, column);
  return cell ? cell->text() : QString();
}

void StatisticsTable::Put(int line, int column, const QString& text) {
  QTableWidgetItem* cell = item(line, column);
  if (!cell) {
    cell = new QTableWidgetItem;
    cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    setItem(line, column, cell);
  }
  cell->setText(text);
}

}  // namespace zynview
