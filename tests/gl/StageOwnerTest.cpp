// Whom a stage on the card takes for its controller.
#include "EveryStage.h"

namespace {

// A controller that a host wrote: it says the right class, but is none of this library's.
class HostDisplay : public ZynDisplayProcessor, public QTD::ComponentImpl {
 public:
  explicit HostDisplay(const QTDSurface* surface) {
    parameters.Set("class", "QTDDisplay");
    parameters.Set("surface", QTD::ToText(static_cast<const void*>(surface)));
  }
  ZynComponent* GetComponent() override { return this; }
  uint32_t Initialize(const ZynImage*) override { return 0; }
  uint32_t DisplayVideo(const ZynImage*) override { return 0; }
  void Uninitialize() override {}
  ZynImgProcessingChain* GetProcessor() override { return nullptr; }
};

class ComponentlessDisplay : public chain_test::FakeDisplay {
 public:
  ZynComponent* GetComponent() override { return nullptr; }
};

class StageOwnerTest : public every_stage::EveryStage {
 protected:
  void ExpectNoSurface(every_stage::Inside& stage) {
    const GLNames before = names();
    EXPECT_EQ(InitOf(stage), Composed(GetParam().noSurface));
    EXPECT_EQ(RunOf(stage), Composed(GetParam().notReady));
    EXPECT_EQ(stage.Face().Out(), nullptr);
    EXPECT_EQ(names(), before);
  }
};

TEST_P(StageOwnerTest, one_that_was_deleted_before_the_stage_was_made_is_none) {
  auto gone = std::make_unique<chain_test::FakeDisplay>();
  gone->Publish(surface.get());
  ZynDisplayProcessor* const address = gone.get();
  gone.reset();
  ExpectNoSurface(*MakeStage(address));
}

TEST_P(StageOwnerTest, one_that_is_deleted_before_init_is_none) {
  auto owner = std::make_unique<chain_test::FakeDisplay>();
  owner->Publish(surface.get());
  const auto stage = MakeStage(owner.get());
  owner.reset();
  ExpectNoSurface(*stage);
}

// The surface is known by then; the owner is asked again after a release alone.
TEST_P(StageOwnerTest, one_that_is_deleted_in_mid_stream_takes_nothing_along) {
  auto owner = std::make_unique<chain_test::FakeDisplay>();
  owner->Publish(surface.get());
  const auto stage = MakeStage(owner.get());
  ASSERT_EQ(InitOf(*stage), 0u);
  owner.reset();
  EXPECT_EQ(RunOf(*stage), 0u);
  stage->Face().Release();
  ExpectNoSurface(*stage);
}

TEST_P(StageOwnerTest, one_of_the_host_s_own_is_none_whatever_class_it_says) {
  HostDisplay owner(surface.get());
  ExpectNoSurface(*MakeStage(&owner));
}

TEST_P(StageOwnerTest, one_without_a_component_is_none) {
  ComponentlessDisplay owner;
  owner.Publish(surface.get());
  ExpectNoSurface(*MakeStage(&owner));
}

TEST_P(StageOwnerTest, one_of_the_processor_variant_has_no_surface_for_the_card) {
  chain_test::Journal journal;
  chain_test::FakeSurface painted(&journal);
  display.Publish(&painted);
  ExpectNoSurface(*MakeStage());
  EXPECT_TRUE(journal.empty());  // nobody began on it
}

TEST_P(StageOwnerTest, one_without_a_surface_is_asked_again_at_init) {
  display.Publish("surface", nullptr);
  const auto stage = MakeStage();
  ExpectNoSurface(*stage);
  display.Publish(surface.get());
  EXPECT_EQ(InitOf(*stage), 0u);
  EXPECT_EQ(RunOf(*stage), 0u);
}

INSTANTIATE_TEST_SUITE_P(Stages, StageOwnerTest, testing::ValuesIn(every_stage::Sorts()),
                         every_stage::NameOf);

}  // namespace
