// What is written beside a raw frame, and what is believed of it.
#include "apps/zynview/sources/Sidecar.h"

#include <gtest/gtest.h>

#include "ZynPixelFormat.h"

using zynview::ReadSidecar;
using zynview::Sidecar;

namespace {

QString Refusal(const QByteArray& text) {
  Sidecar sidecar;
  sidecar.width = 77;
  QString error;
  EXPECT_FALSE(ReadSidecar(text, &sidecar, &error)) << text.toStdString();
  EXPECT_FALSE(error.isEmpty()) << text.toStdString();
  EXPECT_EQ(sidecar.width, 77u) << "nothing is read by halves";
  return error;
}

}  // namespace

TEST(Sidecar, brings_every_field_back) {
  const Sidecar written{ZYN_PIXEL_BAYERRG12P,
                        1936,
                        1216,
                        3000,
                        1,
                        UINT64_MAX - 1,
                        1795271416409312381u,
                        QStringLiteral("a \"camera\" — 1"),
                        QStringLiteral("2026-11-21T14:30:16")};
  Sidecar read;
  QString error;
  ASSERT_TRUE(ReadSidecar(WriteSidecar(written), &read, &error)) << error.toStdString();
  EXPECT_EQ(read.pixelType, written.pixelType);
  EXPECT_EQ(read.width, 1936u);
  EXPECT_EQ(read.height, 1216u);
  EXPECT_EQ(read.linePitch, 3000u);
  EXPECT_EQ(read.origin, 1u);
  EXPECT_EQ(read.imageID, UINT64_MAX - 1);
  EXPECT_EQ(read.timestamp, 1795271416409312381u);
  EXPECT_EQ(read.source, written.source);
  EXPECT_EQ(read.date, written.date);
  EXPECT_EQ(read.FileBytes(), 3000u * 1216u);
}

TEST(Sidecar, needs_format_and_size_alone) {
  Sidecar read;
  QString error;
  ASSERT_TRUE(ReadSidecar(R"({"pixelFormat": "mono12", "width": 3, "height": 2})", &read, &error));
  EXPECT_EQ(read.pixelType, ZYN_PIXEL_MONO12);
  EXPECT_EQ(read.linePitch, 6u) << "lines without padding";
  EXPECT_EQ(read.imageID, 0u);
}

TEST(Sidecar, refuses_what_is_no_description) {
  for (const char* text : {"", "x", "[]", "null", "3", "{", "{\"pixelFormat\": }", "\xff\xfe\x00\x01"})
    Refusal(text);
  Refusal(QByteArray(5000, '['));
  Refusal("{}");
}

TEST(Sidecar, refuses_numbers_that_make_no_frame) {
  for (const char* size :
       {"\"width\": 0, \"height\": 2", "\"width\": -3, \"height\": 2", "\"width\": 65536, \"height\": 2",
        "\"width\": 1e300, \"height\": 2", "\"width\": 3.5, \"height\": 2", "\"width\": \"3\", \"height\": 2",
        "\"width\": 3", "\"width\": 3, \"height\": 99999999999999999999",
        "\"width\": 3, \"height\": 2, \"linePitch\": 2",
        "\"width\": 3, \"height\": 2, \"linePitch\": 4294967299",
        "\"width\": 3, \"height\": 2, \"linePitch\": null", "\"width\": 3, \"height\": 2, \"origin\": 2",
        "\"width\": 65535, \"height\": 65535"})
    Refusal(QByteArray("{\"pixelFormat\": \"Mono8\", ") + size + "}");
  EXPECT_TRUE(
      Refusal(R"({"pixelFormat": "Mono9", "width": 3, "height": 2})").contains(QStringLiteral("Mono9")));
}

TEST(Sidecar, says_what_is_missing) {
  EXPECT_TRUE(Refusal(R"({"width": 3, "height": 2})").startsWith(QStringLiteral("pixelFormat is missing")));
  EXPECT_TRUE(Refusal(R"({"pixelFormat": 12, "width": 3})")
                  .startsWith(QStringLiteral("pixelFormat has to be a name")));
  EXPECT_TRUE(
      Refusal(R"({"pixelFormat": "Mono8", "width": 3})").startsWith(QStringLiteral("height is missing")));
  EXPECT_TRUE(Refusal("[]").contains(QStringLiteral("JSON object")));
}

TEST(Sidecar, ends_with_a_line_feed) {
  EXPECT_TRUE(WriteSidecar(Sidecar()).endsWith("}\n"));
}

TEST(Sidecar, stands_beside_its_frame) {
  EXPECT_EQ(zynview::SidecarFileOf(QStringLiteral("/a.b/frame.1.raw")), QStringLiteral("/a.b/frame.1.json"));
  EXPECT_EQ(zynview::RawFileOf(QStringLiteral("/a.b/frame.1.json")), QStringLiteral("/a.b/frame.1.raw"));
}
