#include "QTD/window/ParentLayout.h"

#include <QGridLayout>
#include <QMainWindow>
#include <QString>
#include <QWidget>

namespace QTD {

void ParentLayout::Add(QWidget* host, QWidget* viewer, QWidget* bar) {
  QLayout* existing = host->layout();
  auto* window = qobject_cast<QMainWindow*>(host);
  if (window && !window->centralWidget()) {
    // A main window takes widgets in its centre only.
    frame = new QWidget(host);
    row = new QHBoxLayout(frame);
    window->setCentralWidget(frame);
    frame->show();
  } else if (window) {
    Add(window->centralWidget(), viewer, bar);
    return;
  } else if (!existing) {
    row = new QHBoxLayout(host);
  } else if (auto* box = qobject_cast<QBoxLayout*>(existing)) {
    row = new QHBoxLayout;
    box->addLayout(row, 1);
  } else if (auto* grid = qobject_cast<QGridLayout*>(existing)) {
    row = new QHBoxLayout;
    grid->addLayout(row, grid->rowCount(), 0, 1, -1);
  } else {
    frame = new QWidget(host);
    row = new QHBoxLayout(frame);
    existing->addWidget(frame);
    frame->show();
  }
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(viewer, 1);
  row->addWidget(bar);
}

void ParentLayout::Remove(QWidget* viewer, QWidget* bar) {
  if (row) {
    row->removeWidget(viewer);
    if (bar) row->removeWidget(bar);
    // What the host has put into the row meanwhile stays, and the row with it.
    if (row->count() == 0) delete row.data();
  }
  // The viewer is a child of the frame and may be on its way out with it.
  if (frame && !row) frame->deleteLater();
}

}  // namespace QTD
