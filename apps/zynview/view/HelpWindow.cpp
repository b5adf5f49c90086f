#include "view/HelpWindow.h"

#include <QFont>
#include <QGridLayout>
#include <QLabel>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "view/KeyTable.h"

namespace zynview {

namespace {

constexpr int kMostHeight = 720, kKeyWidth = 110, kTextWidth = 380, kSpace = 12;

QLabel* Text(const QString& text, bool bold) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(!bold);
  QFont font = label->font();
  font.setBold(bold);
  label->setFont(font);
  label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  return label;
}

}  // namespace

HelpWindow::HelpWindow(QWidget* parent) : QDialog(parent) {
  setWindowTitle(QStringLiteral("Keys and mouse"));
  auto* content = new QWidget;
  auto* grid = new QGridLayout(content);
  grid->setColumnMinimumWidth(0, kKeyWidth);
  grid->setColumnMinimumWidth(1, kTextWidth);
  grid->setColumnStretch(1, 1);
  int line = 0;
  for (const KeySection& section : KeySections()) {
    if (line > 0) grid->setRowMinimumHeight(line++, kSpace);
    grid->addWidget(Text(section.title, true), line++, 0, 1, 2);
    for (const auto& [key, does] : section.rows) {
      grid->addWidget(Text(key, true), line, 0);
      grid->addWidget(Text(does, false), line++, 1);
    }
  }
  grid->setRowStretch(line, 1);
  auto* scroll = new QScrollArea;
  scroll->setWidget(content);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(scroll);
  const QSize wanted = content->sizeHint();
  resize(wanted.width() + scroll->verticalScrollBar()->sizeHint().width() + 3 * kSpace,
         std::min(wanted.height() + 3 * kSpace, kMostHeight));
}

void HelpWindow::Present() {
  show();
  raise();
  activateWindow();
}

}  // namespace zynview
