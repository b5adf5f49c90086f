// What the viewer takes from its command line.
#include "apps/zynview/Options.h"

#include <gtest/gtest.h>

#include "ZynPixelFormat.h"

using zynview::Options;

namespace {

// The options of a command line, and what is wrong with it.
struct Read {
  explicit Read(const char* line) {
    const QString text = QStringLiteral("zynview ") + QString::fromLatin1(line);
    good = zynview::ReadOptions(text.split(QLatin1Char(' '), Qt::SkipEmptyParts), &options, &error);
  }
  Options options;
  QString error;
  bool good = false;
};

using Three = std::array<double, 3>;

}  // namespace

TEST(ViewerOptions, take_one_number_for_all_channels_or_three) {
  const Read one("--scene --gain 1.5 --offset -0.25");
  ASSERT_TRUE(one.good);
  EXPECT_EQ(one.options.color.gain, (Three{1.5, 1.5, 1.5}));
  EXPECT_EQ(one.options.color.offset, (Three{-0.25, -0.25, -0.25}));
  const Read three("--scene --gain 1.9,1,1.3 --offset=-0.1,0,0.1 --gamma 0.45");
  ASSERT_TRUE(three.good);
  EXPECT_EQ(three.options.color.gain, (Three{1.9, 1, 1.3}));
  EXPECT_EQ(three.options.color.offset, (Three{-0.1, 0, 0.1}));
  EXPECT_EQ(three.options.color.gamma, 0.45);
  EXPECT_TRUE(three.options.color.Corrects());
}

TEST(ViewerOptions, change_no_colours_by_default) {
  const Read none("--scene");
  ASSERT_TRUE(none.good);
  EXPECT_FALSE(none.options.color.Corrects());
  EXPECT_FALSE(none.options.color.markExposure);
  EXPECT_EQ(none.options.color.demosaicing, 0);
}

TEST(ViewerOptions, refuse_what_is_no_colour_setting) {
  for (const char* line :
       {"--gain x", "--gain 1,2", "--gain 1,2,3,4", "--gain nan", "--gain 1e999", "--offset ,,", "--gamma 0",
        "--gamma 11", "--demosaicing 4", "--demosaicing 1.5", "--demosaicing -1"}) {
    const Read read(line);
    EXPECT_FALSE(read.good) << line;
    EXPECT_FALSE(read.error.isEmpty()) << line;
  }
}

TEST(ViewerOptions, take_every_demosaicing_method_and_the_marking) {
  for (const int method : {0, 1, 2, 3}) {
    const Read read(QStringLiteral("--demosaicing %1 --mark-exposure").arg(method).toLatin1().constData());
    ASSERT_TRUE(read.good);
    EXPECT_EQ(read.options.color.demosaicing, method);
    EXPECT_TRUE(read.options.color.markExposure);
  }
}

TEST(ViewerOptions, tell_a_raw_dump_from_a_picture_that_is_to_be_encoded) {
  const Read raw("dump.raw --format BayerRG12p --size 64x48");
  EXPECT_EQ(raw.options.source, Options::Raw);
  const Read picture("photo.png --format BayerRG12p");
  EXPECT_EQ(picture.options.source, Options::File);
  EXPECT_EQ(picture.options.pixelType, ZYN_PIXEL_BAYERRG12P);
  EXPECT_FALSE(Read("--scene --format Mono9").good);
  EXPECT_FALSE(Read("--scene --window 12").good);
}

TEST(ViewerOptions, switch_on_what_is_drawn_over_the_picture) {
  const Read none("--scene");
  EXPECT_FALSE(none.options.statusLine || none.options.information || none.options.overlays);
  const Read status("--scene --status");
  EXPECT_TRUE(status.options.statusLine && !status.options.information && !status.options.overlays);
  const Read info("--scene --info");
  EXPECT_TRUE(info.options.information && !info.options.statusLine && !info.options.overlays);
  const Read overlays("--scene --overlays --region 640x480+320+0");
  EXPECT_TRUE(overlays.options.overlays && !overlays.options.statusLine && !overlays.options.information);
  EXPECT_EQ(overlays.options.region, QRect(320, 0, 640, 480));
}

TEST(ViewerOptions, refuse_what_is_no_region) {
  for (const char* line :
       {"--region 640x480", "--region 640x480+1", "--region 640x480+1+x", "--region 0x4+1+1",
        "--region 640x480+-1+1", "--region 1x1+70000+0", "--region 1+1+1"}) {
    const Read read(line);
    EXPECT_FALSE(read.good) << line;
    EXPECT_FALSE(read.error.isEmpty()) << line;
  }
}

TEST(ViewerOptions, say_what_a_size_or_a_region_has_to_look_like) {
  const QString numbers = QStringLiteral(", with numbers from 1 to 65535");
  for (const char* line : {"--scene --size 5", "--scene --size 0x0", "--scene --size 65536x1"})
    EXPECT_EQ(Read(line).error, QStringLiteral("--size needs WIDTHxHEIGHT, such as 1936x1216") + numbers);
  EXPECT_EQ(Read("--window 5x").error,
            QStringLiteral("--window needs WIDTHxHEIGHT, such as 640x480") + numbers);
  EXPECT_EQ(
      Read("--region 5x5").error,
      QStringLiteral("--region needs WIDTHxHEIGHT+X+Y, such as 640x480+320+240, with numbers up to 65535"));
  EXPECT_EQ(Read("--scene --size 65535X48").options.size, QSize(65535, 48)) << "with a large X as well";
  EXPECT_EQ(Read("--scene --size 1936x1216 --window 640x480").options.window, QSize(640, 480));
}

TEST(ViewerOptions, say_what_a_number_may_be) {
  for (const char* line : {"--gamma -1", "--gamma 0.05", "--gamma x", "--gamma 11"})
    EXPECT_EQ(Read(line).error, QStringLiteral("--gamma needs a number from 0.1 to 10")) << line;
  for (const char* line : {"--demosaicing x", "--demosaicing 4", "--demosaicing 0.5"})
    EXPECT_EQ(Read(line).error, QStringLiteral("--demosaicing needs a whole number from 0 to 3")) << line;
  for (const char* line : {"--scene --seconds inf", "--scene --rate nan", "--scene --rate -1", "--pitch 1.5"})
    EXPECT_FALSE(Read(line).good) << line;
}

TEST(ViewerOptions, take_one_source_alone) {
  for (const char* line :
       {"--simulator --scene", "a.png --scene", "a.png --camera x", "--camera x --simulator",
        "a.png --simulator", "a.raw --scene --format Mono8 --size 4x4"}) {
    const Read read(line);
    EXPECT_FALSE(read.good) << line;
    EXPECT_TRUE(read.error.contains(QStringLiteral("only one source"))) << line << read.error.toStdString();
  }
  EXPECT_TRUE(Read("--camera x").good && Read("--simulator").good && Read("a.png b.png").good);
}

TEST(ViewerOptions, refuse_what_the_source_would_ignore) {
  for (const char* line : {"--size 64x48", "--camera x --size 64x48", "--simulator --rate 5", "--rate 5",
                           "a.png --size 64x48", "a.png --pitch 80", "--scene --pitch 80"}) {
    const Read read(line);
    EXPECT_FALSE(read.good) << line;
    EXPECT_FALSE(read.error.isEmpty()) << line;
  }
  EXPECT_TRUE(Read("--scene --size 64x48 --rate 5").good);
  EXPECT_TRUE(Read("a.raw --format Mono8 --size 64x48 --pitch 80 --rate 5").good);
}

TEST(ViewerOptions, refuse_a_place_where_no_picture_can_be_saved) {
  EXPECT_TRUE(Read("--scene --save /no/such/a.png").error.contains(QStringLiteral("/no/such is no folder")));
  EXPECT_TRUE(Read("--scene --save /tmp/a.json").error.contains(QStringLiteral(".png")));
  EXPECT_TRUE(Read("--scene --save /tmp/a.png").good && Read("--scene --save a").good);
}

TEST(ViewerOptions, take_several_files_and_folders) {
  const Read none("--scene");
  EXPECT_FALSE(none.options.rate.has_value());
  EXPECT_TRUE(none.options.files.isEmpty());
  const Read several("a.png b.raw folder --rate 5");
  ASSERT_TRUE(several.good);
  EXPECT_EQ(several.options.source, Options::File);
  EXPECT_EQ(several.options.files,
            (QStringList{QStringLiteral("a.png"), QStringLiteral("b.raw"), QStringLiteral("folder")}));
  EXPECT_EQ(several.options.rate, 5);
}

TEST(ViewerOptions, refuse_what_they_do_not_know) {
  const Read read("--scene --nonsense");
  EXPECT_FALSE(read.good);
  EXPECT_TRUE(read.error.contains(QStringLiteral("nonsense"))) << read.error.toStdString();
  EXPECT_FALSE(Read("--gain").good) << "without its value";
}

TEST(ViewerOptions, take_places_for_pictures) {
  const Read read("a.png --convert out.png --folder /tmp --no-settings");
  ASSERT_TRUE(read.good);
  EXPECT_EQ(read.options.convert, QStringLiteral("out.png"));
  EXPECT_EQ(read.options.folder, QStringLiteral("/tmp"));
  EXPECT_TRUE(read.options.noSettings);
  EXPECT_FALSE(Read("--scene --folder /no/such/folder").good);
  EXPECT_FALSE(Read("--scene --convert=").good);
}

TEST(ViewerOptions, take_one_variant_at_most) {
  EXPECT_TRUE(Read("--scene --opengl").options.opengl);
  EXPECT_TRUE(Read("--scene --processor").options.processor);
  EXPECT_EQ(Read("--scene --opengl --processor").error,
            QStringLiteral("--opengl and --processor exclude each other"));
}
