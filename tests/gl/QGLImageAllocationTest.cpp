// How the memory of a target is asked for, by the table of formats, and what stands in where a driver does
// not draw into three channels.
#include <algorithm>

#include "GLFixture.h"
#include "GLSpy.h"
#include "ZynPixelFormat.h"

namespace {

// What the driver is asked for, and passed on to it.
struct Asked {
  GLint level = -1, internalFormat = -1, border = -1;
  GLsizei width = -1, height = -1, storageWidth = -1, storageHeight = -1;
  GLenum target = 0, format = 1, type = 0, storageTarget = 0, storage = 1;
  bool empty = false;
  int textures = 0, storages = 0;
} asked;

void (*texImage)(GLenum, GLint, GLint, GLsizei, GLsizei, GLint, GLenum, GLenum, const GLvoid*) = nullptr;
void (*renderbufferStorage)(GLenum, GLenum, GLsizei, GLsizei) = nullptr;
GLenum (*checkStatus)(GLenum) = nullptr;
int incomplete = 0;

void NoteTexImage(GLenum target, GLint level, GLint internalFormat, GLsizei width, GLsizei height,
                  GLint border, GLenum format, GLenum type, const GLvoid* pixels) {
  asked.target = target;
  asked.level = level;
  asked.internalFormat = internalFormat;
  asked.width = width;
  asked.height = height;
  asked.border = border;
  asked.format = format;
  asked.type = type;
  asked.empty = pixels == nullptr;
  ++asked.textures;
  texImage(target, level, internalFormat, width, height, border, format, type, pixels);
}
void NoteStorage(GLenum target, GLenum internalFormat, GLsizei width, GLsizei height) {
  asked.storageTarget = target;
  asked.storage = internalFormat;
  asked.storageWidth = width;
  asked.storageHeight = height;
  ++asked.storages;
  renderbufferStorage(target, internalFormat, width, height);
}
GLenum IncompleteAtFirst(GLenum target) {
  return incomplete-- > 0 ? GLenum{GL_FRAMEBUFFER_UNSUPPORTED} : checkStatus(target);
}

class QGLImageAllocationTest : public GLFixture {
 protected:
  void SetUp() override {
    GLFixture::SetUp();
    if (HasFatalFailure()) return;
    auto& table = FunctionTable::of(*surface);
    texImage = table.TexImage2D;
    renderbufferStorage = table.RenderbufferStorage;
    checkStatus = table.CheckFramebufferStatus;
    asked = Asked();
    incomplete = 0;
  }

  // A target for RGB pictures of a driver that does not draw into three channels.
  std::unique_ptr<QGLImage> MadeOfFour(uint32_t width, uint32_t height, uint32_t code) {
    const Swapped often(FunctionTable::of(*surface).CheckFramebufferStatus, &IncompleteAtFirst);
    incomplete = 1;
    return made(width, height, code);
  }
  GLint StorageOf(QGLImage& image) {
    image.bind();
    GLint format = -1;
    surface->glGetRenderbufferParameteriv(GL_RENDERBUFFER, GL_RENDERBUFFER_INTERNAL_FORMAT, &format);
    image.unbind();
    return format;
  }
};

TEST_F(QGLImageAllocationTest, follows_the_table_of_formats) {
  struct Row {
    uint32_t code;
    GLint internalFormat;
    GLenum format, type;
  };
  const Row rows[] = {
      {ZYN_PIXEL_MONO8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_MONO10, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_MONO12, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_MONO14, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_MONO16, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_RGB8, GL_RGB8, GL_RGB, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_RGB10, GL_RGB16, GL_RGB, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_RGB16, GL_RGB16, GL_RGB, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_BGR8, GL_RGB8, GL_BGR, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BGR14, GL_RGB16, GL_BGR, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_RGBA8, GL_RGBA8, GL_RGBA, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BGRA8, GL_RGBA8, GL_BGRA, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BAYERGR8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BAYERRG8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_BAYERGB12, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_BAYERBG16, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
      {ZYN_PIXEL_TRUESENSE_GRBG_WGGW_1_8, GL_R8, GL_RED, GL_UNSIGNED_BYTE},
      {ZYN_PIXEL_TRUESENSE_GBRG_WGGW_2_10, GL_R16, GL_RED, GL_UNSIGNED_SHORT},
  };
  auto& table = FunctionTable::of(*surface);
  const Swapped first(table.TexImage2D, &NoteTexImage);
  const Swapped second(table.RenderbufferStorage, &NoteStorage);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.code);
    asked = Asked();
    const auto image = made(6, 4, row.code);
    ASSERT_EQ(asked.textures, 1);
    EXPECT_EQ(asked.target, GLenum{GL_TEXTURE_2D});
    EXPECT_EQ(asked.level, 0);
    EXPECT_EQ(asked.internalFormat, row.internalFormat);
    EXPECT_EQ(asked.format, row.format);
    EXPECT_EQ(asked.type, row.type);
    EXPECT_EQ(asked.width, 6);
    EXPECT_EQ(asked.height, 4);
    EXPECT_EQ(asked.border, 0);
    EXPECT_TRUE(asked.empty);
    ASSERT_EQ(asked.storages, 1);
    EXPECT_EQ(asked.storageTarget, GLenum{GL_RENDERBUFFER});
    EXPECT_EQ(asked.storage, static_cast<GLenum>(row.internalFormat));
    EXPECT_EQ(asked.storageWidth, 6);
    EXPECT_EQ(asked.storageHeight, 4);
  }
}

TEST_F(QGLImageAllocationTest, asks_with_zeros_for_a_family_that_the_card_does_not_hold) {
  auto& table = FunctionTable::of(*surface);
  const Swapped first(table.TexImage2D, &NoteTexImage);
  const Swapped second(table.RenderbufferStorage, &NoteStorage);
  const Record record = MakeRecord(6, 4, ZYN_PIXEL_YUV422_8_UYVY);
  QGLImage image(surface.get());
  EXPECT_FALSE(image.init(record.get(), nullptr));
  EXPECT_EQ(asked.textures, 1);
  EXPECT_EQ(asked.internalFormat, 0);
  EXPECT_EQ(asked.format, 0u);
  EXPECT_EQ(asked.storage, 0u);
  while (glError() != GL_NO_ERROR) continue;
}

TEST_F(QGLImageAllocationTest, four_channels_in_the_place_of_three_are_asked_for_in_both) {
  const std::pair<uint32_t, GLint> rows[] = {{ZYN_PIXEL_RGB8, GL_RGBA8},
                                             {ZYN_PIXEL_BGR8, GL_RGBA8},
                                             {ZYN_PIXEL_RGB10, GL_RGBA16},
                                             {ZYN_PIXEL_BGR16, GL_RGBA16}};
  for (const auto& [code, wanted] : rows) {
    auto& table = FunctionTable::of(*surface);
    asked = Asked();
    std::unique_ptr<QGLImage> image;
    {
      const Swapped first(table.TexImage2D, &NoteTexImage);
      const Swapped second(table.RenderbufferStorage, &NoteStorage);
      image = MadeOfFour(6, 4, code);
    }
    EXPECT_EQ(asked.textures, 2);
    EXPECT_EQ(asked.internalFormat, wanted);
    EXPECT_EQ(asked.storages, 2);
    EXPECT_EQ(asked.storage, static_cast<GLenum>(wanted));
    EXPECT_EQ(asked.storageWidth, 6);
    EXPECT_EQ(asked.storageHeight, 4);
    EXPECT_EQ(StorageOf(*image), wanted);
  }
}

TEST_F(QGLImageAllocationTest, three_channels_keep_their_samples_in_four) {
  for (const uint32_t code : {ZYN_PIXEL_RGB8, ZYN_PIXEL_BGR8, ZYN_PIXEL_RGB16, ZYN_PIXEL_BGR16}) {
    SCOPED_TRACE(code);
    const bool bytes = code == ZYN_PIXEL_RGB8 || code == ZYN_PIXEL_BGR8;
    const Samples samples = Scattered(7 * 5 * 3, bytes ? 255 : 65535);
    const Record record = MakeRecord(7, 5, code, samples);
    const auto source = made(7, 5, code);
    surface->glBindTexture(GL_TEXTURE_2D, source->texture());
    ASSERT_TRUE(source->fillGPU(record.get()));

    const auto copied = MadeOfFour(7, 5, code);
    ASSERT_TRUE(copied->copyTexture(source->texture(), nullptr));
    EXPECT_EQ(readBack(*copied), samples) << "copied";
    // What lies there may be copied on, and be filled from memory.
    const auto next = made(7, 5, code);
    ASSERT_TRUE(next->copyTexture(copied->texture(), nullptr));
    EXPECT_EQ(readBack(*next), samples) << "copied on";
    const auto filled = MadeOfFour(7, 5, code);
    surface->glBindTexture(GL_TEXTURE_2D, filled->texture());
    ASSERT_TRUE(filled->fillGPU(record.get()));
    EXPECT_EQ(readBack(*filled), samples) << "filled";
    EXPECT_EQ(glError(), uint32_t{GL_NO_ERROR});
  }
}

}  // namespace
