// What a picture costs in memory on its way over the card, once a stage has settled: nothing. Counted are the
// allocations of this thread by `operator new`. The sanitizers have an `operator new` of their own, which
// tells more, and is left alone.
#if !defined(__has_feature)
#define __has_feature(feature) 0
#endif
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !__has_feature(address_sanitizer) && \
    !__has_feature(thread_sanitizer)

#include <execinfo.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "EveryStage.h"

namespace {

constexpr int kMostFrames = 24;

// One allocation, and by whom.
struct Allocation {
  size_t size;
  int frames;
  void* callers[kMostFrames];
};

thread_local bool counting = false;
thread_local int allocations = 0;
thread_local Allocation firstOnes[4];

void Note(size_t size) {
  if (!counting) return;
  counting = false;  // who asks for the callers may allocate
  if (allocations < static_cast<int>(std::size(firstOnes))) {
    Allocation& noted = firstOnes[allocations];
    noted.size = size;
    noted.frames = backtrace(noted.callers, kMostFrames);
  }
  ++allocations;
  counting = true;
}

void* Allocate(size_t size) noexcept {
  Note(size);
  return std::malloc(size == 0 ? 1 : size);
}
void* AllocateAligned(size_t size, std::align_val_t alignment) noexcept {
  Note(size);
  const auto boundary = static_cast<size_t>(alignment);
  return std::aligned_alloc(boundary, (size + boundary - 1) / boundary * boundary);
}
void* OrThrow(void* memory) {
  if (!memory) throw std::bad_alloc();
  return memory;
}

}  // namespace

void* operator new(size_t size) {
  return OrThrow(Allocate(size));
}
void* operator new[](size_t size) {
  return OrThrow(Allocate(size));
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new[](size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
void* operator new(size_t size, std::align_val_t alignment) {
  return OrThrow(AllocateAligned(size, alignment));
}
void* operator new[](size_t size, std::align_val_t alignment) {
  return OrThrow(AllocateAligned(size, alignment));
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete[](void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete(void* memory, size_t, std::align_val_t) noexcept {
  std::free(memory);
}
void operator delete[](void* memory, size_t, std::align_val_t) noexcept {
  std::free(memory);
}

namespace {

using every_stage::kHeight;
using every_stage::kWidth;

class AllocationTest : public StageFixture {
 protected:
  template <typename Step>
  static int AllocationsOf(Step&& step) {
    allocations = 0;
    counting = true;
    step();
    counting = false;
    return allocations;
  }
  static void TellCallers() {
    for (int i = 0; i < std::min(allocations, static_cast<int>(std::size(firstOnes))); ++i) {
      std::printf("%zu bytes by\n", firstOnes[i].size);
      std::fflush(stdout);
      backtrace_symbols_fd(firstOnes[i].callers, firstOnes[i].frames, 1);
    }
  }

  void ExpectNoAllocations(ZynImgProcessor& stage, const ZynImage* image) {
    constexpr int kSettling = 8, kCounted = 20;
    for (int i = 0; i < kSettling; ++i) ASSERT_EQ(Run(stage, image), 0u);
    uint32_t answers = 0;
    EXPECT_EQ(AllocationsOf([&] {
                for (int i = 0; i < kCounted; ++i) answers |= Run(stage, image);
              }),
              0);
    TellCallers();
    EXPECT_EQ(answers, 0u);
  }
  void ExpectNoAllocationsOnCard(ZynImgProcessor& stage, const ZynImage* image) {
    ASSERT_NE(AttachedTexture(image), 0u);
    ExpectNoAllocations(stage, image);
  }

  const Record mosaic = MakeRecord(kWidth, kHeight, ZYN_PIXEL_BAYERGR8, Scattered(kWidth* kHeight, 255));
  const Record picture = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB8, Scattered(kWidth* kHeight * 3, 255));
};

TEST_F(AllocationTest, are_counted) {
  std::string text;
  EXPECT_EQ(AllocationsOf([&] { text.assign(100, 'x'); }), 1);
  EXPECT_EQ(AllocationsOf([] { ::operator delete(::operator new(4)); }), 1);
  EXPECT_EQ(AllocationsOf([] {}), 0);
  // Those of the library, too.
  QGLIPImage stage(&display);
  EXPECT_GT(AllocationsOf([&] { EXPECT_EQ(Init(stage, picture), 0u); }), 10);
  EXPECT_GE(AllocationsOf([&] { stage.Parameters().Set("note", text); }), 1);
}

TEST_F(AllocationTest, an_image_stage_makes_none) {
  OnCard first(&display, picture);
  QGLIPImage stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, an_image_stage_that_changes_the_format_makes_none) {
  OnCard first(&display, mosaic);
  const Record wanted = MakeRecord(kWidth, kHeight, ZYN_PIXEL_RGB16);
  QGLIPImage stage(&display);
  stage.SetParameterInt("image.flip.vert", 1);
  ASSERT_EQ(Init(stage, mosaic, wanted.get()), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, demosaicing_makes_none) {
  OnCard first(&display, mosaic);
  QGLIPBayer stage(&display);
  ASSERT_EQ(Init(stage, mosaic), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, a_correction_makes_none) {
  OnCard first(&display, picture);
  QGLIPColorCorrection stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
  stage.SetParameterDouble("gain.r", 1.5);
  stage.SetParameterDouble("gamma", 0.45);
  ASSERT_EQ(stage.ExecuteCommand("params.apply"), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
  stage.Enable(false);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, a_coloration_makes_none) {
  OnCard first(&display, picture);
  const Record camera = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO8);
  OnCard unpacked(&display, camera);
  FakeChain chain;
  chain.unpacked = &unpacked.stage;
  QGLIPExposureColoration stage(&display, &chain);
  ASSERT_EQ(Init(stage, picture), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
  stage.Enable(false);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, an_overlay_without_objects_makes_none) {
  OnCard first(&display, picture);
  QGLIPImageOverlay stage(&display);
  ASSERT_EQ(Init(stage, picture), 0u);
  ExpectNoAllocationsOnCard(stage, first.record());
}

TEST_F(AllocationTest, pictures_in_memory_make_none) {
  QGLIPImage image(&display);
  ASSERT_EQ(Init(image, picture), 0u);
  ExpectNoAllocations(image, picture.get());
  QGLIPBayer bayer(&display);
  ASSERT_EQ(Init(bayer, mosaic), 0u);
  ExpectNoAllocations(bayer, mosaic.get());
  const Record packed = MakeRecord(kWidth, kHeight, ZYN_PIXEL_MONO12P);
  QGLIPUnpack unpack(&display);
  ASSERT_EQ(Init(unpack, packed), 0u);
  ExpectNoAllocations(unpack, packed.get());
}

}  // namespace

#endif
