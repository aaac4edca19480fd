#include "Platform/Layout/LayoutEngine.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "TestKit/PlatformReports.h"
#include "Tests/Platform/Layout/TestItem.h"

namespace zqcore::platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Attribute = NSLayoutAttribute;
using Axis = NSLayoutConstraintOrientation;

class LayoutEngineTest : public testing::Test {
  protected:
    LayoutEngineTest() {
        root.add(first);
        root.add(second);
    }
    TestItem root{"root", {{0, 0}, {200, 100}}};
    TestItem first{"first", {{1, 2}, {3, 4}}};
    TestItem second{"second", {{5, 6}, {7, 8}}};
};

TEST_F(LayoutEngineTest, AttributesAreVisualAndOffsetsGoRightAndDown) {
    struct Case {
        std::function<void(ConstraintMaker&)> make;
        CGRect frame;
    };
    const Case cases[] = {
        {[](ConstraintMaker& make) { make.edges().equalToSuperview().inset(8); }, {{8, 8}, {184, 84}}},
        {[](ConstraintMaker& make) {
             make.edges().equalToSuperview().inset(NSEdgeInsets{1, 2, 3, 4});
         },
         {{2, 1}, {194, 96}}},
        {[](ConstraintMaker& make) { make.edges().equalToSuperview().offset(8); }, {{8, 8}, {200, 100}}},
        {[](ConstraintMaker& make) {
             make.size().equalTo(18);
             make.center().equalToSuperview().offset(-1.5);
         },
         {{89.5, 39.5}, {18, 18}}},
        {[](ConstraintMaker& make) {
             make.size().equalToSuperview().inset(10);
             make.right().bottom().equalTo(-5);
         },
         {{15, 15}, {180, 80}}},
        {[](ConstraintMaker& make) {
             make.size().equalTo(CGSize{20, 10});
             make.top().greaterThanOrEqualToSuperview().offset(9);
             make.left().equalToSuperview();
         },
         {{0, 9}, {20, 10}}},
    };
    for (const auto& [make, frame] : cases) {
        first.setFrame({{1, 2}, {3, 4}});
        snp(first).remakeConstraints(make);
        LayoutEngine::layout(root);
        EXPECT_EQ(first.layoutFrame(), frame) << "case " << (&frame - &cases[0].frame);
    }
}

TEST_F(LayoutEngineTest, OnlyTheConstrainedViewLeavesItsMask) {
    snp(first).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalTo(snp(second).right()).offset(8);
        make.width().equalTo(second);
    });
    EXPECT_FALSE(first.translatesAutoresizingMaskIntoConstraints());
    EXPECT_TRUE(second.translatesAutoresizingMaskIntoConstraints());
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{20, 2}, {7, 4}})) << "y and height keep what code set";
    second.setFrame({{50, 0}, {10, 10}});
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{68, 2}, {10, 4}}));
    EXPECT_EQ(second.layoutFrame(), (CGRect{{50, 0}, {10, 10}}));
}

TEST_F(LayoutEngineTest, WhatNoConstraintTouchesKeepsWhatCodeSetsAlsoLater) {
    snp(first).makeConstraints([](ConstraintMaker& make) {
        make.width().equalTo(50);
        make.top().greaterThanOrEqualToSuperview().offset(1);
    });
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{1, 2}, {50, 4}}));
    first.setFrame({{-32, 23}, {50, 9}});
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{-32, 23}, {50, 9}}));
    first.setFrame({{-32, -4}, {50, 9}});
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{-32, 1}, {50, 9}})) << "as near as the limit allows";
}

TEST_F(LayoutEngineTest, ContentHugsAndResistsByItsPriorities) {
    first.setContentSize({40, 16});
    second.setContentSize({60, -1});
    snp(first).makeConstraints([](ConstraintMaker& make) { make.left().top().equalToSuperview(); });
    snp(second).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalTo(snp(first).right());
        make.right().equalToSuperview();
        make.top().equalToSuperview();
    });
    second.setContentHuggingPriority(249, Axis::horizontal);
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{0, 0}, {40, 16}}));
    EXPECT_EQ(second.layoutFrame(), (CGRect{{40, 0}, {160, 8}})) << "the weaker hug gives way";
    root.setFrame({{0, 0}, {70, 100}});
    first.setContentCompressionResistancePriority(751, Axis::horizontal);
    root.layout();
    EXPECT_EQ(second.layoutFrame(), (CGRect{{40, 0}, {30, 8}}));
    first.setContentSize({55, 16});
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{0, 0}, {55, 16}}));
    EXPECT_EQ(second.layoutFrame(), (CGRect{{55, 0}, {15, 8}}));
}

TEST_F(LayoutEngineTest, ConstraintsReachAcrossLevels) {
    TestItem inner("inner");
    first.add(inner);
    first.setFrame({{30, 20}, {60, 50}});
    snp(inner).makeConstraints([&](ConstraintMaker& make) {
        make.right().equalTo(snp(root).right()).offset(-10);
        make.top().equalTo(snp(second).bottom());
        make.size().equalTo(5);
    });
    root.layout();
    EXPECT_EQ(inner.layoutFrame(), (CGRect{{155, -6}, {5, 5}}));
}

TEST_F(LayoutEngineTest, TheNewestOfContradictingRequirementsFallsWithOneLine) {
    snp(first).makeConstraints([](ConstraintMaker& make) { make.width().equalTo(50); });
    std::shared_ptr<MadeConstraint> newest;
    snp(first).makeConstraints(
        [&](ConstraintMaker& make) { newest = make.width().equalTo(60).constraint(); });
    testkit::PlatformReports reports;
    root.layout();
    first.invalidateIntrinsicContentSize();
    root.layout();
    EXPECT_THAT(reports.take(), ElementsAre("Unable to satisfy all required constraints; dropped the newest: "
                                            "<first>.width == 60"));
    EXPECT_EQ(first.layoutFrame().size.width, 50);
    EXPECT_TRUE(newest->isActive());
    newest->updateOffset(50);
    root.layout();
    first.constraints().front()->setActive(false);
    newest->updateOffset(61);
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 61) << "it holds as soon as it can";
}

TEST_F(LayoutEngineTest, AnEditThatContradictsDropsTheNewestToo) {
    std::shared_ptr<MadeConstraint> oldest;
    snp(first).makeConstraints([&](ConstraintMaker& make) {
        oldest = make.width().equalTo(50).constraint();
        make.width().lessThanOrEqualTo(70);
    });
    root.layout();
    oldest->updateOffset(80);
    testkit::PlatformReports reports;
    root.layout();
    EXPECT_THAT(reports.take(), ElementsAre(HasSubstr("<first>.width <= 70")));
    EXPECT_EQ(first.layoutFrame().size.width, 80);
}

TEST_F(LayoutEngineTest, LeavingTheTreeEndsWhatCrossesAndKeepsWhatIsInside) {
    TestItem inner("inner");
    first.add(inner);
    std::shared_ptr<MadeConstraint> crossing;
    std::shared_ptr<MadeConstraint> inside;
    snp(inner).makeConstraints([&](ConstraintMaker& make) {
        crossing = make.left().equalTo(second).constraint();
        inside = make.top().equalToSuperview().offset(3).constraint();
    });
    first.remove();
    EXPECT_FALSE(crossing->isActive());
    EXPECT_TRUE(inside->isActive());
    crossing->deactivate();
    crossing->updateOffset(4);
    testkit::PlatformReports reports;
    crossing->activate();
    EXPECT_THAT(
        reports.take(),
        ElementsAre("<inner>.left == <second>.left + 4 can't become active: its items share no view"));
    first.layout();
    EXPECT_EQ(inner.layoutFrame().origin.y, 3);
}

TEST_F(LayoutEngineTest, AnItemThatEndsTakesItsConstraintsAlong) {
    std::shared_ptr<MadeConstraint> made;
    {
        TestItem guest("guest", {{90, 0}, {10, 10}});
        root.add(guest);
        snp(first).makeConstraints(
            [&](ConstraintMaker& make) { made = make.left().equalTo(guest).constraint(); });
        root.layout();
        EXPECT_EQ(first.layoutFrame().origin.x, 90);
    }
    EXPECT_FALSE(made->isActive());
    EXPECT_EQ(made->layoutConstraints().front()->secondItem(), nullptr);
    root.layout();
    EXPECT_EQ(first.layoutFrame().origin.x, 90);
}

TEST_F(LayoutEngineTest, FittingSizeIsTheSmallestThatHoldsAndIgnoresTheOutside) {
    first.setContentSize({40, 16});
    second.setContentSize({50, 20});
    snp(first).makeConstraints([](ConstraintMaker& make) {
        make.left().top().equalToSuperview().offset(8);
        make.bottom().lessThanOrEqualToSuperview().inset(8);
    });
    snp(second).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalTo(snp(first).right()).offset(5);
        make.top().equalTo(first);
        make.right().bottom().equalToSuperview().inset(8);
    });
    EXPECT_EQ(LayoutEngine::fittingSize(root), (CGSize{8 + 40 + 5 + 50 + 8, 8 + 20 + 8}));
    EXPECT_EQ(LayoutEngine::fittingSize(first), (CGSize{40, 16})) << "its own content alone";
    EXPECT_EQ(root.layoutFrame().size, (CGSize{200, 100})) << "nothing moves";
    TestItem empty("empty", {{0, 0}, {9, 9}});
    EXPECT_EQ(LayoutEngine::fittingSize(empty), CGSize{});
}

// What a fitting size was found with serves the layout that follows, and must not show.
TEST_F(LayoutEngineTest, ALayoutIsTheSameAfterAFittingSize) {
    struct Scene {
        TestItem root{"root", {{0, 0}, {200, 100}}};
        TestItem card{"card", {{0, 0}, {10, 10}}};
        TestItem label{"label"}, cap{"cap"}, still{"still", {{3, 40}, {30, 7}}};
        std::shared_ptr<MadeConstraint> gap;

        Scene() {
            root.add(card);
            for (TestItem* item : {&label, &cap, &still}) card.add(*item);
            label.setContentSize({40, 14});
            cap.setContentSize({20, 20});
            snp(card).makeConstraints([](ConstraintMaker& make) {
                make.left().top().equalToSuperview().offset(10);
                make.width().equalTo(0).priority(NSLayoutPriorityFittingSizeCompression);
            });
            snp(label).makeConstraints([](ConstraintMaker& make) {
                make.left().top().equalToSuperview().offset(15);
                make.bottom().lessThanOrEqualToSuperview().offset(-9);
            });
            snp(cap).makeConstraints([&](ConstraintMaker& make) {
                gap = make.left().equalTo(snp(label).right()).offset(8).constraint();
                make.top().equalTo(snp(still).bottom()).offset(2);
                make.right().bottom().lessThanOrEqualToSuperview().offset(-15);
            });
        }
    };
    using Change = std::function<void(Scene&)>;
    const std::vector<Change> changes{
        [](Scene&) {},
        [](Scene& scene) {
            scene.root.setFrame({{0, 0}, {300, 60}});
        },
        [](Scene& scene) {
            scene.still.setFrame({{3, 50}, {30, 9}});
        },
        [](Scene& scene) {
            scene.label.setContentSize({70, 14});
        },
        [](Scene& scene) { scene.gap->updateOffset(31); },
        [](Scene& scene) { scene.gap->deactivate(); },
        [](Scene& scene) { scene.cap.remove(); },
        [](Scene& scene) {
            snp(scene.card).makeConstraints([](ConstraintMaker& make) { make.right().equalToSuperview(); });
        }};
    for (const Change& change : changes) {
        Scene plain, before, after;
        EXPECT_EQ(LayoutEngine::fittingSize(before.card), (CGSize{98, 84}));
        for (Scene* scene : {&plain, &before, &after}) change(*scene);
        static_cast<void>(LayoutEngine::fittingSize(after.card));
        // Twice: the second pass edits what the first one put together.
        for (const CGFloat width : {40.0, 90.0}) {
            for (Scene* scene : {&plain, &before, &after}) {
                if (width != 40) scene->label.setContentSize({width, 14});
                scene->root.layout();
            }
            for (const auto item : {&Scene::card, &Scene::label, &Scene::cap}) {
                const CGRect frame = (plain.*item).layoutFrame();
                EXPECT_EQ((before.*item).layoutFrame(), frame) << "change " << &change - changes.data();
                EXPECT_EQ((after.*item).layoutFrame(), frame) << "change " << &change - changes.data();
            }
        }
    }
}

TEST_F(LayoutEngineTest, ADetachedRootTakesItsSolvedSize) {
    TestItem pill("pill", {{11, 12}, {1, 1}});
    pill.add(first);
    snp(first).makeConstraints([](ConstraintMaker& make) {
        make.size().equalTo(CGSize{100, 18});
        make.edges().equalToSuperview().inset(7);
    });
    pill.setTranslatesAutoresizingMaskIntoConstraints(false);
    pill.layout();
    EXPECT_EQ(pill.layoutFrame(), (CGRect{{11, 12}, {114, 32}}));
}

TEST_F(LayoutEngineTest, NumbersThatAreNoneSpoilNothing) {
    std::shared_ptr<MadeConstraint> left;
    snp(first).makeConstraints([&](ConstraintMaker& make) {
        left = make.left().equalTo(snp(second).right()).offset(NAN).constraint();
        make.width().equalTo(INFINITY).priority(50);
        make.width().lessThanOrEqualTo(30);
    });
    second.setFrame({{NAN, 0}, {-INFINITY, 8}});
    root.layout();
    second.setFrame({{5, 0}, {7, 8}});
    left->updateOffset(2);
    root.layout();
    EXPECT_EQ(first.layoutFrame(), (CGRect{{14, 2}, {30, 4}}));
}

TEST_F(LayoutEngineTest, NothingIsSolvedOrSetWithoutAChange) {
    snp(first).makeConstraints([](ConstraintMaker& make) { make.edges().equalToSuperview(); });
    root.layout();
    EXPECT_FALSE(root.needsConstraintPass());
    const int before = first.framesSet;
    root.layout();
    EXPECT_EQ(first.framesSet, before);
    root.setFrame({{0, 0}, {90, 90}});
    EXPECT_TRUE(root.needsConstraintPass());
    root.layout();
    EXPECT_EQ(first.framesSet, before + 1);
    EXPECT_EQ(first.layoutFrame(), (CGRect{{0, 0}, {90, 90}}));
}

class ConstraintMakerTest : public LayoutEngineTest {};

TEST_F(ConstraintMakerTest, AHandleReplacesTheConstantByItsOwnRule) {
    std::shared_ptr<MadeConstraint> right;
    snp(first).makeConstraints([&](ConstraintMaker& make) {
        make.left().equalToSuperview();
        right = make.right().equalToSuperview().inset(10).constraint();
    });
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 190);
    right->updateInset(20);
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 180);
    right->updateOffset(20);
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 220);
    right->deactivate();
    right->updateInset(50);
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 220) << "an inactive one decides nothing";
    right->activate();
    root.layout();
    EXPECT_EQ(first.layoutFrame().size.width, 150) << "but remembers";
}

TEST_F(ConstraintMakerTest, RemakeRemovesOnlyWhatAMakerMadeOnThatView) {
    const auto own = NSLayoutConstraint::make(first, Attribute::height, NSLayoutRelation::equal, nullptr,
                                              Attribute::notAnAttribute, 33);
    own->setActive(true);
    snp(first).makeConstraints([](ConstraintMaker& make) { make.width().equalTo(44); });
    snp(second).makeConstraints([&](ConstraintMaker& make) { make.width().equalTo(first); });
    snp(first).remakeConstraints([](ConstraintMaker& make) { make.width().equalTo(55); });
    root.layout();
    EXPECT_EQ(first.layoutFrame().size, (CGSize{55, 33}));
    EXPECT_EQ(second.layoutFrame().size.width, 55);
    snp(first).removeConstraints();
    EXPECT_EQ(first.constraints().size(), 1U);
}

TEST_F(ConstraintMakerTest, UpdateEditsWhatIsThereAndAddsWhatIsNot) {
    snp(first).makeConstraints([](ConstraintMaker& make) { make.left().equalToSuperview().offset(3); });
    const auto before = root.constraints();
    snp(first).updateConstraints([](ConstraintMaker& make) {
        make.left().equalToSuperview().offset(9);
        make.width().equalTo(20);
    });
    root.layout();
    EXPECT_EQ(root.constraints(), before);
    EXPECT_EQ(first.layoutFrame(), (CGRect{{9, 2}, {20, 4}}));
}

}  // namespace
}  // namespace zqcore::platform
