// The lines that a picture leaves in the trace on its way through viewer and window.
#include <log4cpp/StringQueueAppender.hh>
#include <regex>

#include "Harness.h"
#include "QTD/frame/Logging.h"

namespace {

using windowtest::Picture;
using windowtest::Settle;

class TraceTest : public windowtest::ViewerTest {
 protected:
  void SetUp() override {
    ViewerTest::SetUp();
    Settle();
    log4cpp::Category& category = QTD::LogCategory();
    before = category.getPriority();
    appender = new log4cpp::StringQueueAppender("lines");  // the category owns it
    category.addAppender(appender);
    category.setPriority(log4cpp::Priority::DEBUG);
  }
  void TearDown() override {
    QTD::LogCategory().setPriority(before);
    QTD::LogCategory().removeAppender(appender);
    ViewerTest::TearDown();
  }

  // The lines in order, with the running time replaced; "" ends them.
  std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    while (appender->queueSize() > 0) {
      std::string line = appender->popMessage();
      while (!line.empty() && line.back() == '\n') line.pop_back();
      const size_t start = line.find("QTD");
      if (start == std::string::npos) continue;
      line = std::regex_replace(line.substr(start), std::regex("timestamp [0-9]+ ns"), "timestamp T ns");
      lines.push_back(line);
    }
    return lines;
  }

  log4cpp::Priority::Value before = 0;
  log4cpp::StringQueueAppender* appender = nullptr;
  const Picture picture{50, 40};
};

}  // namespace

TEST_F(TraceTest, a_picture_that_is_painted_at_once) {
  viewer->setImage(picture.Record(), true);
  Settle();
  EXPECT_EQ((std::vector<std::string>{
                "QTDWindow::setImage(): id = 77",
                "QTDWindow::update(): post UpdateRequest, sys timestamp T ns, image id 77",
                "QTDWindow::event(): UpdateRequest event, sys timestamp T ns, image id 77",
                "QTDWindow::render(): draw image, sys timestamp T ns, id 77",
                "QTDWindow::render(): image is drawn, sys timestamp T ns, id 77",
            }),
            Lines());
}

TEST_F(TraceTest, a_picture_that_is_painted_by_request) {
  viewer->setImage(picture.Record(), false);
  EXPECT_EQ((std::vector<std::string>{
                "QTDWindow::setImage(): id = 77",
                "QTDViewer::setImage: post UpdateRequest, sys timestamp T ns, image id 77",
            }),
            Lines());
}

TEST_F(TraceTest, a_picture_that_is_taken_away) {
  viewer->setImage(picture.Record(), true);
  Settle();
  Lines();
  viewer->setImage(nullptr, false);
  Settle();
  EXPECT_EQ((std::vector<std::string>{
                "QTDViewer::setImage: post UpdateRequest, sys timestamp T ns, image id 0",
                "QTDWindow::update(): post UpdateRequest, sys timestamp T ns, image id 0",
                "QTDWindow::event(): UpdateRequest event, sys timestamp T ns, image id 0",
            }),
            Lines());
}
