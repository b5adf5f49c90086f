#include "gl/image/QGLImage.h"

#include "GLFixture.h"
#include "GLSpy.h"
#include "ZynPixelFormat.h"

namespace {

class QGLImageTest : public GLFixture {
 protected:
  static GLint state(GLenum name) {
    GLint value = -1;
    glGetIntegerv(name, &value);
    return value;
  }
  static QTD::PROPERTIES sizeList(const char* width, const char* height, uint32_t code) {
    QTD::PROPERTIES size;
    size.Set("size.x", width);
    size.Set("size.y", height);
    size.Set("pixeltype", std::to_string(code));
    return size;
  }
};

int incompleteAnswers = 0;
GLenum (*completeness)(GLenum) = nullptr;
GLenum OftenIncomplete(GLenum target) {
  if (incompleteAnswers-- > 0) return GL_FRAMEBUFFER_UNSUPPORTED;
  return completeness(target);
}

TEST_F(QGLImageTest, knows_filter_and_surface_at_first) {
  QGLImage image(surface.get());
  EXPECT_EQ(image.properties().GetString("filter"), "9728");
  EXPECT_EQ(image.properties().GetPointer("surface"), surface.get());
  EXPECT_EQ(image.properties().GetString("readGPU"), "0");
  EXPECT_FALSE(image.isValid());
  EXPECT_EQ(image.image(), nullptr);
  EXPECT_EQ(image.texture(), 0u);
  EXPECT_EQ(image.program(), 0u);
}

TEST_F(QGLImageTest, is_a_record_and_a_target_of_the_same_size) {
  const GLNames before = names();
  auto image = made(5, 3, ZYN_PIXEL_RGB8);
  EXPECT_TRUE(image->isValid());
  ASSERT_NE(image->image(), nullptr);
  EXPECT_EQ(image->image()->width, 5u);
  EXPECT_EQ(image->image()->height, 3u);
  EXPECT_EQ(image->image()->pixelType, ZYN_PIXEL_RGB8);
  EXPECT_EQ(image->image()->origin, 0u);
  EXPECT_NE(image->image()->imageData, nullptr);
  const GLNames now = names();
  EXPECT_EQ(now.textures, before.textures + 1);
  EXPECT_EQ(now.framebuffers, before.framebuffers + 1);
  EXPECT_EQ(now.renderbuffers, before.renderbuffers + 1);
  EXPECT_EQ(now.programs, before.programs + 1);
  EXPECT_NE(image->program(), 0u);
  image->done();
  EXPECT_FALSE(image->isValid());
  EXPECT_EQ(image->image(), nullptr);
  EXPECT_NE(image->program(), 0u);  // stays
  image.reset();
  EXPECT_EQ(names(), before);
}

TEST_F(QGLImageTest, its_texture_is_the_colour_target) {
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  ASSERT_TRUE(image->bind());
  surface->glClearColor(0.2f, 0, 0, 0);
  surface->glClear(GL_COLOR_BUFFER_BIT);
  image->unbind();
  EXPECT_EQ(ReadTexture(image->texture(), 1, 8), Samples(16, 51));
}

TEST_F(QGLImageTest, its_texture_is_clamped_and_filtered) {
  QTD::PROPERTIES linear;
  linear.Set("filter", "9729");
  const Record record = MakeRecord(2, 2, ZYN_PIXEL_MONO8);
  QGLImage image(surface.get());
  ASSERT_TRUE(image.init(record.get(), &linear));
  surface->glBindTexture(GL_TEXTURE_2D, image.texture());
  for (const auto& [name, wanted] : {std::pair<GLenum, GLint>{GL_TEXTURE_MIN_FILTER, GL_LINEAR},
                                     {GL_TEXTURE_MAG_FILTER, GL_LINEAR},
                                     {GL_TEXTURE_WRAP_S, GL_CLAMP},
                                     {GL_TEXTURE_WRAP_T, GL_CLAMP}}) {
    GLint value = 0;
    surface->glGetTexParameteriv(GL_TEXTURE_2D, name, &value);
    EXPECT_EQ(value, wanted);
  }
}

TEST_F(QGLImageTest, the_list_has_the_last_word) {
  const Record record = MakeRecord(5, 3, ZYN_PIXEL_RGB8);
  QTD::PROPERTIES other = sizeList("7", "9", ZYN_PIXEL_MONO16);
  QGLImage image(surface.get());
  ASSERT_TRUE(image.init(record.get(), &other));
  EXPECT_EQ(image.image()->width, 7u);
  EXPECT_EQ(image.image()->height, 9u);
  EXPECT_EQ(image.image()->pixelType, ZYN_PIXEL_MONO16);
}

TEST_F(QGLImageTest, needs_no_image) {
  QTD::PROPERTIES alone = sizeList("7", "9", ZYN_PIXEL_BGR8);
  QGLImage image(surface.get());
  ASSERT_TRUE(image.init(nullptr, &alone));
  EXPECT_EQ(image.image()->pixelType, ZYN_PIXEL_BGR8);
  EXPECT_EQ(image.image()->origin, 0u);
}

TEST_F(QGLImageTest, finds_its_surface_in_the_list) {
  QTD::PROPERTIES parameters = sizeList("2", "2", ZYN_PIXEL_MONO8);
  QGLImage image(nullptr);
  EXPECT_FALSE(image.init(nullptr, &parameters));
  parameters.Set("surface", pointerText(surface.get()));
  EXPECT_TRUE(image.init(nullptr, &parameters));
}

TEST_F(QGLImageTest, is_bottom_up_when_one_of_origin_and_turn_says_so) {
  for (const bool origin : {false, true}) {
    for (const bool turn : {false, true}) {
      const Record record = MakeRecord(2, 2, ZYN_PIXEL_MONO8, origin);
      QTD::PROPERTIES parameters;
      parameters.Set("image.flip.vert", turn ? "1" : "0");
      QGLImage image(surface.get());
      ASSERT_TRUE(image.init(record.get(), &parameters));
      EXPECT_EQ(image.image()->origin, origin != turn ? 1u : 0u);
      EXPECT_EQ(image.image()->height, 2u);
    }
  }
}

TEST_F(QGLImageTest, keeps_to_the_limit_of_renderbuffers) {
  surface->properties.Set("gl.renderbuffer", "64");
  surface->properties.Set("gl.texture", "32");  // does not count
  const GLNames before = names();
  for (const auto& [width, height] :
       {std::pair{"65", "4"}, {"4", "65"}, {"4294967295", "4"}, {"0", "4"}, {"4", "-4"}, {"4", "0"}}) {
    QTD::PROPERTIES parameters = sizeList(width, height, ZYN_PIXEL_MONO8);
    QGLImage image(surface.get());
    EXPECT_FALSE(image.init(nullptr, &parameters)) << width << " " << height;
    EXPECT_EQ(image.image(), nullptr);
    EXPECT_FALSE(image.isValid());
    EXPECT_EQ(names(), before);
  }
  QTD::PROPERTIES most = sizeList("64", "64", ZYN_PIXEL_MONO8);
  QGLImage image(surface.get());
  EXPECT_TRUE(image.init(nullptr, &most));
}

TEST_F(QGLImageTest, fails_for_codes_that_are_no_target) {
  const GLNames before = names();
  for (const uint32_t code : {0u, 0x01080100u, ZYN_PIXEL_YUV422_8_UYVY, ZYN_PIXEL_MONO12PACKED}) {
    QTD::PROPERTIES parameters = sizeList("4", "4", code);
    QGLImage image(surface.get());
    EXPECT_FALSE(image.init(nullptr, &parameters)) << std::hex << code;
    EXPECT_EQ(image.image(), nullptr);
    EXPECT_EQ(names(), before);
    while (glError() != 0) continue;
  }
}

TEST_F(QGLImageTest, every_family_is_a_target) {
  for (const uint32_t code : {ZYN_PIXEL_MONO8, ZYN_PIXEL_MONO12, ZYN_PIXEL_RGB8, ZYN_PIXEL_RGB16,
                              ZYN_PIXEL_BGR8, ZYN_PIXEL_BGR10, ZYN_PIXEL_RGBA8, ZYN_PIXEL_BGRA8,
                              ZYN_PIXEL_BAYERGR8, ZYN_PIXEL_BAYERRG12, ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8}) {
    EXPECT_TRUE(made(3, 5, code)->isValid()) << std::hex << code;
    EXPECT_EQ(glError(), 0u) << std::hex << code;
  }
}

TEST_F(QGLImageTest, three_channels_become_four_where_the_driver_wants_it) {
  completeness = FunctionTable::of(*surface).CheckFramebufferStatus;
  for (const auto& [code, wanted] :
       {std::pair<uint32_t, GLint>{ZYN_PIXEL_RGB8, GL_RGBA8}, {ZYN_PIXEL_BGR12, GL_RGBA16}}) {
    std::unique_ptr<QGLImage> image;
    {
      const Swapped often(FunctionTable::of(*surface).CheckFramebufferStatus, &OftenIncomplete);
      incompleteAnswers = 1;
      image = made(4, 4, code);
    }
    surface->glBindTexture(GL_TEXTURE_2D, image->texture());
    GLint internalFormat = 0;
    glGetTexLevelParameteriv(GL_TEXTURE_2D, 0, GL_TEXTURE_INTERNAL_FORMAT, &internalFormat);
    EXPECT_EQ(internalFormat, wanted);
    surface->glBindTexture(GL_TEXTURE_2D, 0);
    EXPECT_NE(image->readGPU(nullptr), nullptr);
  }
}

TEST_F(QGLImageTest, fails_where_the_target_stays_incomplete) {
  const GLNames before = names();
  completeness = FunctionTable::of(*surface).CheckFramebufferStatus;
  const Swapped often(FunctionTable::of(*surface).CheckFramebufferStatus, &OftenIncomplete);
  for (const auto& [code, answers] : {std::pair<uint32_t, int>{ZYN_PIXEL_RGB8, 2}, {ZYN_PIXEL_MONO8, 1}}) {
    incompleteAnswers = answers;
    const Record record = MakeRecord(4, 4, code);
    QGLImage image(surface.get());
    EXPECT_FALSE(image.init(record.get(), nullptr));
    EXPECT_EQ(image.image(), nullptr);
    EXPECT_EQ(incompleteAnswers, 0);
    EXPECT_EQ(names(), before);
  }
}

TEST_F(QGLImageTest, an_error_left_behind_fails_it) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  surface->glUseProgram(12345);  // an invalid value
  QGLImage first(surface.get());
  EXPECT_FALSE(first.init(record.get(), nullptr));
  EXPECT_EQ(surface->properties.GetString("error"), "QGLImage::init() OpenGL error 1281 (GL_INVALID_VALUE)");
  glEnd();  // an invalid operation, which is passed over elsewhere
  QGLImage second(surface.get());
  EXPECT_FALSE(second.init(record.get(), nullptr));
  QGLImage third(surface.get());
  EXPECT_TRUE(third.init(record.get(), nullptr));
}

TEST_F(QGLImageTest, is_refused_outside_begin_and_end) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  surface->end(nullptr, false);
  QGLImage image(surface.get());
  EXPECT_FALSE(image.init(record.get(), nullptr));
  EXPECT_EQ(image.image(), nullptr);
  EXPECT_FALSE(image.bind());
  EXPECT_FALSE(image.render());
  EXPECT_FALSE(image.releaseProgram());
  EXPECT_EQ(image.useProgram(true, nullptr), 0u);
}

TEST_F(QGLImageTest, leaves_no_target_bound) {
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_EQ(state(GL_FRAMEBUFFER_BINDING), 0);
  EXPECT_EQ(state(GL_RENDERBUFFER_BINDING), 0);
  EXPECT_EQ(state(GL_CURRENT_PROGRAM), 0);
  GLuint buffer = 0;
  surface->glGenBuffers(1, &buffer);
  surface->glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  EXPECT_TRUE(image->bind());
  EXPECT_NE(state(GL_FRAMEBUFFER_BINDING), 0);
  EXPECT_NE(state(GL_RENDERBUFFER_BINDING), 0);
  EXPECT_EQ(state(GL_PIXEL_UNPACK_BUFFER_BINDING), 0);
  image->unbind();
  EXPECT_EQ(state(GL_FRAMEBUFFER_BINDING), 0);
  EXPECT_EQ(state(GL_RENDERBUFFER_BINDING), 0);
  surface->glDeleteBuffers(1, &buffer);
}

TEST_F(QGLImageTest, render_draws_what_is_bound_into_the_target) {
  auto input = made(4, 2, ZYN_PIXEL_MONO8);
  auto target = made(4, 2, ZYN_PIXEL_MONO8);
  const Samples samples = Scattered(8, 255);
  const Record record = MakeRecord(4, 2, ZYN_PIXEL_MONO8, samples);
  surface->glBindTexture(GL_TEXTURE_2D, input->texture());
  ASSERT_TRUE(input->fillGPU(record.get()));
  ASSERT_NE(target->useProgram(false, nullptr), 0u);
  EXPECT_TRUE(target->render());
  EXPECT_TRUE(target->releaseProgram());
  EXPECT_EQ(state(GL_DRAW_FRAMEBUFFER_BINDING), 0);
  EXPECT_EQ(state(GL_RENDERBUFFER_BINDING), 0);
  EXPECT_EQ(ReadTexture(target->texture(), 1, 8), samples);
}

TEST_F(QGLImageTest, is_deleted_also_outside_begin_and_end) {
  const GLNames before = names();
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  surface->end(nullptr, false);
  image.reset();
  EXPECT_EQ(QOpenGLContext::currentContext(), nullptr);
  ASSERT_TRUE(surface->begin(nullptr));
  EXPECT_EQ(names().textures, before.textures);
  EXPECT_EQ(names().framebuffers, before.framebuffers);
  EXPECT_EQ(names().renderbuffers, before.renderbuffers);
}

TEST_F(QGLImageTest, outlives_surface_and_context) {
  auto first = made(4, 4, ZYN_PIXEL_MONO8);
  auto second = made(4, 4, ZYN_PIXEL_MONO8);
  surface->done();
  EXPECT_FALSE(first->bind());
  EXPECT_EQ(first->useProgram(true, nullptr), 0u);
  EXPECT_EQ(first->readGPU(nullptr), nullptr);
  first.reset();
  surface.reset();
  second.reset();
}

TEST_F(QGLImageTest, a_thousand_of_them_leave_nothing_behind) {
  const GLNames before = names();
  for (int i = 0; i < 1000; ++i) made(2, 2, ZYN_PIXEL_RGB8);
  EXPECT_EQ(names(), before);
}

// The attachment.

TEST_F(QGLImageTest, attaches_itself_to_its_record) {
  auto image = made(4, 4, ZYN_PIXEL_RGB8);
  const auto* block = static_cast<const QGLImageAttachment*>(image->image()->attachments);
  ASSERT_NE(block, nullptr);
  uint32_t words[4];
  std::memcpy(words, block, sizeof words);
  EXPECT_EQ(words[0], 100u);
  EXPECT_EQ(words[1], 5466u);
  EXPECT_EQ(words[2], 520u);
  EXPECT_EQ(words[3], 0u);
  const auto* bytes = reinterpret_cast<const uint8_t*>(block);
  void *owner = nullptr, *next = image.get();
  uint64_t unused = 1;
  std::memcpy(&owner, bytes + 16, sizeof owner);
  std::memcpy(&unused, bytes + 24, sizeof unused);
  std::memcpy(&next, bytes + 32, sizeof next);
  EXPECT_EQ(owner, image.get());
  EXPECT_EQ(unused, 0u);
  EXPECT_EQ(next, nullptr);
  EXPECT_EQ(AttachedImage(image->image()), image.get());
  EXPECT_EQ(AttachedTexture(image->image()), image->texture());
}

TEST_F(QGLImageTest, a_host_s_record_has_no_texture) {
  const Record record = MakeRecord(4, 4, ZYN_PIXEL_MONO8);
  EXPECT_EQ(AttachedTexture(record.get()), 0u);
  EXPECT_EQ(AttachedTexture(nullptr), 0u);
  EXPECT_EQ(AttachedImage(nullptr), nullptr);
}

TEST_F(QGLImageTest, the_first_block_with_the_tag_counts) {
  auto image = made(4, 4, ZYN_PIXEL_MONO8);
  auto other = made(4, 4, ZYN_PIXEL_MONO8);
  QGLImageAttachment third, second, first;
  third.image = other.get();
  second.image = image.get();
  second.next = &third;
  first.tag = 1;
  first.image = other.get();
  first.next = &second;
  auto owner = made(4, 4, ZYN_PIXEL_MONO8);
  ZynImage& record = *owner->image();
  void* const own = record.attachments;
  record.attachments = &first;
  EXPECT_EQ(AttachedTexture(&record), image->texture());
  second.image = nullptr;
  EXPECT_EQ(AttachedTexture(&record), 0u);
  second.tag = third.tag = 2;
  EXPECT_EQ(AttachedTexture(&record), 0u);
  record.attachments = own;
}

}  // namespace
