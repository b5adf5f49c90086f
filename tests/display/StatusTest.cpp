// The status line and the information text.
#include <thread>

#include "QTD/display/StatusText.h"
#include "cpu/screen/CPUSurface.h"
#include "tests/display/PictureFixture.h"

namespace display_test {

namespace {

std::string Item(const char* name, const QTD::StatusSource& source) {
  QTD::PROPERTIES items;
  QTD::RefreshStatus(items, source);
  return items.GetString(name, "absent");
}

}  // namespace

TEST(StatusText, a_display_without_anything_shows_nothing_in_each_item) {
  QTD::PROPERTIES items;
  QTD::StatusSource source;
  source.imageID = 42;  // without a format there is no image
  QTD::RefreshStatus(items, source);
  EXPECT_EQ(QTD::StatusText(items),
            "size=\"\" last=\"000000\" in/p=\"0/0\" fps=\"0.0\" proc=\"-\" zoom=\"0%\" at=\"-\"");
}

TEST(StatusText, each_item_has_its_form) {
  QTD::PROPERTIES chain;
  QTD::StatusSource source;
  source.hasFormat = true;
  source.width = 1936;
  source.height = 1216;
  source.received = 12;
  source.processed = 9;
  source.rate = 29.96;
  source.chain = &chain;
  EXPECT_EQ(Item("size", source), "1936x1216");
  EXPECT_EQ(Item("in/p", source), "12/9");
  EXPECT_EQ(Item("fps", source), "30.0");
  EXPECT_EQ(Item("proc", source), "");  // the chain has not run yet
  chain.Set("time", "3.25 ms");
  EXPECT_EQ(Item("proc", source), "3.25 ms");
}

TEST(StatusText, the_last_image_shows_six_digits_and_low_32_bits) {
  QTD::StatusSource source;
  source.hasFormat = true;
  source.imageID = 42;
  EXPECT_EQ(Item("last", source), "000042");
  source.imageID = 1234567;
  EXPECT_EQ(Item("last", source), "1234567");
  source.imageID = 0x500000007;
  EXPECT_EQ(Item("last", source), "000007");
  source.imageID = 0xFFFFFFFF;
  EXPECT_EQ(Item("last", source), "4294967295");
}

TEST(StatusText, items_keep_their_places_when_they_are_renewed) {
  QTD::PROPERTIES items;
  QTD::StatusSource source;
  QTD::RefreshStatus(items, source);
  source.received = 5;
  QTD::RefreshStatus(items, source);
  const char* names[] = {"size", "last", "in/p", "fps", "proc", "zoom", "at"};
  EXPECT_EQ(items.Count(), 7);
  for (int index = 0; index < 7; ++index) EXPECT_EQ(items.NameAt(index), names[index]);
  EXPECT_EQ(items.GetString("in/p"), "5/0");
}

TEST(StatusText, trailing_zeros_go_but_for_the_one_behind_the_point) {
  for (const auto& [text, expected] :
       {std::pair("29.900", "29.9"), std::pair("30.0", "30.0"), std::pair("30.000", "30.0"),
        std::pair("1.05", "1.05"), std::pair("100", "100"), std::pair("0", "0"), std::pair("", ""),
        std::pair("5.", "5.")}) {
    EXPECT_EQ(QTD::WithoutTrailingZeros(text), expected) << text;
  }
}

TEST(StatusText, the_information_names_the_variant) {
  CPUSurface surface;
  surface.properties.Set("gl.vendor", "Maker");
  surface.properties.Set("gl.version", "4.5");
  QTD::PROPERTIES processor = QTD::InfoItems("0x10", false, &surface);
  EXPECT_EQ(QTD::StatusText(processor), "ID=\"0x10\" type=\"CPU\"");
  QTD::PROPERTIES opengl = QTD::InfoItems("0x10", true, &surface);
  EXPECT_EQ(QTD::StatusText(opengl), "ID=\"0x10\" type=\"GPU\" vendor=\"Maker\" opengl=\"4.5\"");
  QTD::PROPERTIES noSurface = QTD::InfoItems("0x10", true, nullptr);
  EXPECT_EQ(QTD::StatusText(noSurface), "ID=\"0x10\" type=\"GPU\"");
}

class Status : public PictureTest {
 protected:
  // Without ticks of the display's own.
  Status() { display->SetParameterInt("system.timer", 1000000); }
};

TEST_F(Status, switching_it_on_shows_the_line_at_once_and_off_takes_it_away) {
  image.record.imageID = 42;
  Show();
  ASSERT_TRUE(display->SetScale(2.0, false));
  ASSERT_TRUE(display->SetCenter(0.5, 0.5, false));
  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  EXPECT_EQ(Parameter("display.view.status"), "1");
  const std::string text = Attribute("@status", "text");
  EXPECT_EQ(text.rfind("size=\"1000x800\" last=\"000042\" in/p=\"1/1\" fps=\"", 0), 0u) << text;
  EXPECT_NE(text.find(" zoom=\"50%\" at=\"0.50;0.50\""), std::string::npos) << text;
  EXPECT_NE(text.find(" ms\""), std::string::npos) << text;  // the chain's time
  EXPECT_EQ(Attribute("@status", "placement"), "1");
  EXPECT_EQ(Attribute("@status", "text.clr"), "15480");
  EXPECT_EQ(Attribute("@status", "text.font"), "medium");

  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  EXPECT_EQ(Parameter("display.view.status"), "0");
  EXPECT_FALSE(Has("@status"));
}

TEST_F(Status, and_information_go_also_after_a_failed_image) {
  Show();
  ASSERT_EQ(Run("cmd.display.view.status"), 1u);
  ASSERT_EQ(Run("cmd.display.view.info"), 1u);
  ASSERT_TRUE(Has("@status"));
  ASSERT_TRUE(Has("@info"));
  HostImage small(ZYN_PIXEL_MONO8, 8, 8);
  display->DisplayVideo(&small.record);  // refused
  ASSERT_NE(display->LastError(), 0u);
  EXPECT_FALSE(display->DeleteObject("@status"));  // a host's own deletions need a picture
  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  EXPECT_EQ(Parameter("display.view.status"), "0");
  EXPECT_FALSE(Has("@status"));
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Parameter("display.view.info"), "0");
  EXPECT_FALSE(Has("@info"));
}

TEST_F(Status, before_any_image_the_rate_is_0) {
  Start(image);
  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  const std::string text = Attribute("@status", "text");
  EXPECT_EQ(text.rfind("size=\"1000x800\" last=\"000000\" in/p=\"0/0\" fps=\"0.0\" proc=\"\"", 0), 0u)
      << text;
}

TEST_F(Status, a_new_format_begins_without_an_image) {
  image.record.imageID = 42;
  Show();
  HostImage other(ZYN_PIXEL_MONO8, 20, 10);
  ASSERT_EQ(display->Initialize(&other.record), 0u);
  Run("cmd.display.view.status");
  EXPECT_EQ(Attribute("@status", "text").rfind("size=\"20x10\" last=\"000000\" in/p=\"0/0\"", 0), 0u);
}

TEST_F(Status, a_tick_renews_the_line_that_is_switched_on) {
  Show();
  display->slotTimer();
  EXPECT_FALSE(Has("@status"));
  display->SetParameterInt("display.view.status", 1);
  display->slotTimer();
  ASSERT_TRUE(Has("@status"));
  ASSERT_TRUE(display->SetScale(4.0, false));
  display->slotTimer();
  EXPECT_NE(Attribute("@status", "text").find("zoom=\"25%\""), std::string::npos);
  EXPECT_EQ(Objects().count(), 1);
}

TEST_F(Status, a_tick_touches_nothing_while_the_line_is_off) {
  Show();
  ASSERT_NE(display->AddText("the host's own", 1, 1, nullptr), "");
  QTD::ARGUMENTS args{{"objectID", "@status"}};
  ASSERT_EQ(display->AddText("the host's own", 5, 5, &args), "@status");
  const int64_t received = display->InputRate().Total();
  display->slotTimer();
  EXPECT_EQ(Attribute("@status", "text"), "the host's own");
  EXPECT_EQ(display->InputRate().Total(), received);
}

TEST_F(Status, the_timer_of_the_display_renews_the_line) {
  display->SetParameterInt("system.timer", 20);
  Show();
  display->SetParameterInt("display.view.status", 1);
  EXPECT_TRUE(WaitFor([this] { return Has("@status"); }));
}

TEST_F(Status, a_tick_bears_a_parameter_that_is_no_number) {
  Show();
  display->SetParameterString("display.view.status", "maybe");
  EXPECT_NO_THROW(display->slotTimer());
}

TEST_F(Status, without_a_picture_the_flag_flips_and_nothing_appears) {
  EXPECT_EQ(Run("cmd.display.view.status"), 1u);
  EXPECT_EQ(Parameter("display.view.status"), "1");
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Parameter("display.view.info"), "1");
  Start(image);
  EXPECT_EQ(Objects().count(), 0);
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Parameter("display.view.info"), "0");
}

TEST_F(Status, the_information_is_shown_and_taken_away) {
  Show();
  EXPECT_EQ(Parameter("display.view.info"), "absent");
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Attribute("@info", "text"), "ID=\"" + Parameter("system.objectID") + "\" type=\"CPU\"");
  EXPECT_EQ(Attribute("@info", "placement"), "2");
  EXPECT_EQ(Attribute("@info", "adjust"), "0");
  EXPECT_EQ(Attribute("@info", "text.clr"), "15480");
  EXPECT_EQ(Attribute("@info", "text.font"), "medium");
  EXPECT_EQ(Run("cmd.display.view.info"), 1u);
  EXPECT_EQ(Parameter("display.view.info"), "0");
  EXPECT_FALSE(Has("@info"));
}

TEST_F(Status, the_windows_own_keys_reach_it) {
  Show();
  Window()->Execute("cmd.display.view.status", nullptr);
  EXPECT_TRUE(WaitFor([this] { return Has("@status"); }));
  Window()->Execute("cmd.display.view.info", nullptr);
  EXPECT_TRUE(WaitFor([this] { return Has("@info"); }));
}

TEST_F(Status, it_may_be_switched_while_images_stream) {
  Show();
  std::thread host([this] {
    for (int round = 0; round < 200; ++round) Run("cmd.display.view.status");
  });
  for (int frame = 0; frame < 200; ++frame) {
    image.record.imageID = static_cast<uint64_t>(frame);
    display->DisplayVideo(&image.record);
    display->slotTimer();
    QCoreApplication::processEvents();
  }
  host.join();
  EXPECT_EQ(Parameter("display.view.status"), "0");
  EXPECT_FALSE(Has("@status"));
}

}  // namespace display_test
