#include "view/Notice.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <utility>

namespace zynview {

namespace {

constexpr int kMargin = 6;
// Dark letters on amber, whatever the desktop's colours are.
constexpr char kStyle[] =
    "QWidget#noticeLine { background: #ffd454; }"
    "QWidget#noticeLine QLabel { color: #201800; font-weight: bold; }";

}  // namespace

Notice::Notice(QWidget* parent)
    : QToolBar(QStringLiteral("Notice"), parent), label(new QLabel), mend(new QPushButton) {
  setObjectName(QStringLiteral("notice"));
  setMovable(false);
  setContextMenuPolicy(Qt::PreventContextMenu);
  toggleViewAction()->setVisible(false);  // it comes and goes by itself
  auto* line = new QWidget;
  line->setObjectName(QStringLiteral("noticeLine"));
  line->setStyleSheet(QString::fromLatin1(kStyle));
  line->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
  auto* row = new QHBoxLayout(line);
  row->setContentsMargins(kMargin, kMargin, kMargin, kMargin);
  label->setObjectName(QStringLiteral("noticeText"));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  row->addWidget(label, 1);
  row->addWidget(mend);
  addWidget(line);
  // The keys are the display's.
  mend->setFocusPolicy(Qt::NoFocus);
  connect(mend, &QPushButton::clicked, this, [this] {
    hide();
    if (press) press();
  });
  hide();
}

void Notice::Tell(const QString& text, const QString& button, std::function<void()> onPress) {
  label->setText(text);
  mend->setText(button);
  press = std::move(onPress);
  show();
}

}  // namespace zynview
