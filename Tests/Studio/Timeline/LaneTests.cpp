#include <Tavaro/Studio/Timeline/LaneContents.h>
#include <Tavaro/Studio/Timeline/TimelineHit.h>
#include <Tavaro/Studio/Timeline/TimelineLayout.h>
#include <Tavaro/Studio/Timeline/TimelineMagnets.h>

#include <TavaroCore/Project/DemoProject.h>

#include <Tests/Core/Editing/RandomDocument.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

using namespace tavaro;

namespace {

constexpr unsigned seeds = 60;

struct Shown {
    explicit Shown(DemoProject document, double width = 1100) : project(std::move(document)) {
        layout.show(project);
        view.resize(width, 2000);
        view.setContent(layout.content());
        view.setLanesHeight(layout.height());
    }
    TimelineScene scene() const { return {layout, view, project, -100}; }

    DemoProject project;
    TimelineLayout layout;
    TimelineView view;
};

DemoProject randomProject(unsigned seed) {
    RandomDocument random(seed);
    auto project = random.make();
    if (random.below(2)) project.intro = TitleCard{.text = "Hello"};
    if (random.below(2)) project.outro = TitleCard{.text = "Bye", .duration = 4};
    for (int i = random.below(4); i > 0; --i)
        project.cameraMoves.push_back({.time = random.time(0, project.duration())});
    auto& redactions = project.redactions.edit();
    for (int i = random.below(4); i > 0; --i)
        redactions.push_back({.start = random.time(0, 20), .end = random.time(20, 60)});
    return project;
}

/// Every item of a layout with its row's place.
template<class Visit> void forEachItem(TimelineLayout const& layout, Visit&& visit) {
    for (std::size_t lane = 0; lane < layout.lanes().size(); ++lane) {
        auto const& index = layout.lanes()[lane].index;
        for (std::size_t row = 0; row < index.rowCount(); ++row) {
            for (auto const& item : index.row(row)) visit(LanePlace{lane, row, item});
        }
    }
}

std::vector<LaneItem> randomItems(std::mt19937& random, int count, double longest) {
    std::uniform_real_distribution<double> starts(0, 1000), lengths(0, longest);
    std::vector<LaneItem> items;
    for (int i = 0; i < count; ++i) {
        double const start = starts(random);
        items.push_back({UUID::random(), start, start + lengths(random), static_cast<std::uint32_t>(i)});
    }
    return items;
}

}

TEST(Lanes, boxesAreWhereTheDocumentsTimesAre) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        Shown const shown(randomProject(seed));
        auto const& project = shown.project;
        std::map<UUID, TimeRange> expected;
        auto const expect = [&](auto const& items) {
            for (auto const& item : items) expected[item.id] = item.range();
        };
        expect(project.timeline.clips);
        expect(project.zoomEvents);
        expect(project.overlays);
        expect(project.captions.cues);
        expect(project.silences);
        for (auto const& track : project.audioTracks) expect(track.clips);
        std::size_t found = 0;
        forEachItem(shown.layout, [&](LanePlace const& place) {
            auto const range = expected.find(place.item.id);
            if (range == expected.end()) return;
            ++found;
            auto const box = shown.layout.box(shown.view, place);
            EXPECT_NEAR(shown.view.time(box.x), range->second.start, shown.view.secondsPerPoint()) << seed;
            EXPECT_NEAR(shown.view.time(box.right()), range->second.end(), shown.view.secondsPerPoint()) << seed;
            EXPECT_GE(box.y, TimelineView::rulerHeight);
            EXPECT_LE(box.bottom(), TimelineView::rulerHeight + shown.layout.height());
        });
        EXPECT_EQ(found, expected.size()) << seed;
    }
}

TEST(Lanes, whereAnItemIsDrawnItIsHit) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        Shown const shown(randomProject(seed));
        std::vector<LaneBox> boxes;
        forEachItem(shown.layout, [&](LanePlace const& place) {
            auto const box = shown.layout.box(shown.view, place);
            for (auto const& other : boxes)
                ASSERT_FALSE(box.width > 1e-3 && other.width > 1e-3 && box.meets(other) &&
                             std::min(box.right(), other.right()) - std::max(box.x, other.x) > 1e-3)
                    << seed;
            boxes.push_back(box);
            double const y = box.y + box.height * 0.75;
            auto const middle = hitTest(shown.scene(), box.x + box.width / 2, y);
            ASSERT_TRUE(isOnItem(middle.part)) << seed;
            EXPECT_EQ(middle.place.item.id, place.item.id) << seed;
            EXPECT_EQ(middle.part, TimelinePart::body);
            if (box.width < 12 || place.item.hold == LaneItemHold::placed) return;
            if (place.item.kind == LaneItemKind::card) return; // of those one edge is held
            EXPECT_EQ(hitTest(shown.scene(), box.x + 1, y).part, TimelinePart::leadingEdge) << seed;
            EXPECT_EQ(hitTest(shown.scene(), box.right() - 1, y).part, TimelinePart::trailingEdge) << seed;
        });
    }
}

TEST(Lanes, aFingerReachesFurtherThanAMouse) {
    DemoProject project;
    project.timeline.clips = {{.asset = "a.mp4", .duration = 100}};
    project.zoomEvents = {{.start = 40, .duration = 20}};
    Shown const shown(project);
    auto const box = shown.layout.box(shown.view, *shown.layout.find(project.zoomEvents[0].id));
    double const y = box.y + box.height - 2;
    EXPECT_EQ(hitTest(shown.scene(), box.x - 10, y).part, TimelinePart::lane);
    EXPECT_EQ(hitTest(shown.scene(), box.x - 10, y, TimelineHand::finger).part, TimelinePart::leadingEdge);
    EXPECT_EQ(hitTest(shown.scene(), box.x + 12, y).part, TimelinePart::body);
    EXPECT_EQ(hitTest(shown.scene(), box.x + 12, y, TimelineHand::finger).part, TimelinePart::leadingEdge);
    EXPECT_EQ(hitTest(shown.scene(), 20, y).part, TimelinePart::head);
    EXPECT_EQ(hitTest(shown.scene(), box.x, 5).part, TimelinePart::ruler);
}

TEST(LaneIndex, rowsAreFewStableAndWithoutOverlap) {
    std::mt19937 random(3);
    for (int round = 0; round < 40; ++round) {
        auto items = randomItems(random, 200, 20);
        LaneIndex const index(items);
        std::map<UUID, std::size_t> rowOf;
        std::vector<double> edges;
        for (std::size_t row = 0; row < index.rowCount(); ++row) {
            double end = -1;
            for (auto const& item : index.row(row)) {
                ASSERT_GE(item.start, end - 2e-6);
                end = item.end;
                rowOf[item.id] = row;
                edges.push_back(item.start);
            }
        }
        ASSERT_EQ(rowOf.size(), items.size());
        // No more rows than items at one time.
        std::size_t most = 0;
        for (double const t : edges) {
            most = std::max<std::size_t>(
                most, std::ranges::count_if(items, [&](auto const& i) { return i.start <= t && t < i.end - 2e-6; }));
        }
        EXPECT_LE(index.rowCount(), most + 1);
        std::ranges::shuffle(items, random);
        LaneIndex const again(items);
        for (std::size_t row = 0; row < again.rowCount(); ++row) {
            for (auto const& item : again.row(row)) EXPECT_EQ(rowOf[item.id], row);
        }
    }
    LaneIndex const odd({{UUID::random(), NAN, 1}, {UUID::random(), 0, INFINITY}, {UUID::random(), 5, 3}});
    ASSERT_EQ(odd.size(), 1u);
    EXPECT_EQ(odd.row(0)[0].end, 5);
}

TEST(LaneIndex, anItemThatIsReplacedLeavesRowsAsIfAllWereLaidOutAnew) {
    std::mt19937 random(5);
    std::uniform_real_distribution<double> share(0, 1);
    for (double const longest : {0.5, 6.0, 40.0}) {
        auto items = randomItems(random, 300, longest);
        LaneIndex index(items);
        for (int round = 0; round < 400; ++round) {
            auto& item = items[random() % items.size()];
            double const length = share(random) < 0.2 ? 0 : share(random) * longest * 1.5;
            item.start = share(random) < 0.7 ? std::max(item.start + (share(random) - 0.5) * longest, 0.0)
                                             : share(random) * 1000;
            if (share(random) < 0.2) item.start = items[random() % items.size()].end; // they touch
            item.end = item.start + length;
            ASSERT_TRUE(index.replace(item));
            LaneIndex const anew(items);
            ASSERT_EQ(index.rowCount(), anew.rowCount()) << round;
            for (std::size_t row = 0; row < anew.rowCount(); ++row)
                ASSERT_TRUE(std::ranges::equal(index.row(row), anew.row(row))) << round << " row " << row;
        }
        auto odd = items[0];
        odd.end = NAN;
        EXPECT_FALSE(index.replace(odd));
        odd = items[0];
        odd.index = 1000;
        EXPECT_FALSE(index.replace(odd));
        EXPECT_TRUE(std::ranges::equal(index.items(), LaneIndex(items).items()));
    }
}

TEST(LaneIndex, blocksShowAllThatIsInViewOnce) {
    std::mt19937 random(5);
    for (double const longest : {0.01, 0.5, 8.0}) {
        for (double const point : {0.001, 0.2, 3.0}) {
            LaneIndex const index(randomItems(random, 3000, longest));
            TimeRange const view{200, 300};
            for (std::size_t row = 0; row < index.rowCount(); ++row) {
                auto const all = index.row(row);
                auto const seen = index.row(row, view);
                auto next = seen.empty() ? 0 : static_cast<std::size_t>(seen.data() - all.data());
                double last = -INFINITY;
                auto const blocks = index.blocks(row, view, 3 * point, point);
                for (auto const& block : blocks) {
                    ASSERT_EQ(block.first, next);
                    next = block.first + block.count;
                    EXPECT_EQ(block.start, all[block.first].start);
                    double end = 0;
                    for (auto i = block.first; i < next; ++i) {
                        end = std::max(end, all[i].end);
                        if (block.count > 1) {
                            ASSERT_LT(all[i].duration(), 3 * point);
                        }
                    }
                    EXPECT_EQ(block.end, end);
                    ASSERT_GE(block.start, last - 2e-6);
                    last = block.end;
                }
                ASSERT_EQ(next, seen.empty() ? 0 : static_cast<std::size_t>(seen.data() - all.data()) + seen.size());
                // As many as there are points, whatever there are of items.
                EXPECT_LE(static_cast<double>(blocks.size()), 2 * view.duration / point + 2);
            }
        }
    }
}

TEST(Lanes, onlyWhatChangedIsMadeAnewAndEqualsAWholeNewLayout) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        auto project = randomProject(seed);
        TimelineLayout kept;
        kept.show(project);
        auto const other = randomProject(seed + 1000);
        project.zoomEvents = other.zoomEvents;
        project.audioTracks = other.audioTracks;
        project.timeline = other.timeline;
        project.intro = other.intro;
        ChangedFields changed;
        std::size_t place = 0;
        forEachField<DemoProject>([&](auto const& field) {
            for (std::string_view const name : {"zoomEvents", "audioTracks", "timeline", "intro"}) {
                if (field.name == name) changed.add(place);
            }
            ++place;
        });
        kept.show(project, changed);
        TimelineLayout fresh;
        fresh.show(project);
        ASSERT_EQ(kept.lanes().size(), fresh.lanes().size());
        EXPECT_EQ(kept.content(), fresh.content());
        for (std::size_t i = 0; i < kept.lanes().size(); ++i) {
            EXPECT_EQ(kept.lanes()[i].key, fresh.lanes()[i].key);
            EXPECT_EQ(kept.lanes()[i].top, fresh.lanes()[i].top);
            EXPECT_TRUE(std::ranges::equal(kept.lanes()[i].index.items(), fresh.lanes()[i].index.items()))
                << kept.lanes()[i].key;
        }
    }
}

TEST(Lanes, aRedactionIsWhereTheFilmShowsItsMomentOfTheRecording) {
    DemoProject project;
    project.assetDurations["take.mp4"] = 100;
    project.timeline.clips = {{.asset = "take.mp4", .start = 0, .sourceStart = 50, .duration = 10},
                              {.asset = "take.mp4", .start = 10, .sourceStart = 0, .duration = 20, .speed = 2}};
    project.redactions.edit() = {{.start = 20, .end = 55}};
    auto const items = laneItems(project, LaneKind::redactions);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].start, 0);
    EXPECT_EQ(items[0].end, 5);
    EXPECT_EQ(items[1].start, 20);
    EXPECT_EQ(items[1].end, 30);
}

TEST(Lanes, scenesLastUntilTheNextOne) {
    DemoProject project;
    project.timeline.clips = {{.asset = "a.mp4", .duration = 30}};
    project.layoutCues = {{.time = 20}, {.time = 5}};
    auto const items = laneItems(project, LaneKind::camera);
    ASSERT_EQ(items.size(), 2u);
    EXPECT_EQ(items[0].id, project.layoutCues[1].id);
    EXPECT_EQ(items[0].end, 20);
    EXPECT_EQ(items[1].end, 30);
}

TEST(TimelineMagnets, theNearestEdgeIsThatOfALinearSearch) {
    for (unsigned seed = 0; seed < seeds; ++seed) {
        Shown const shown(randomProject(seed));
        RandomDocument random(seed);
        for (int i = 0; i < 50; ++i) {
            double const t = random.time(-3, shown.project.duration() + 3) + 0.003, radius = 0.4;
            std::vector<double> edges = {-100, 0, shown.layout.content().start, shown.layout.content().end()};
            forEachItem(shown.layout, [&](LanePlace const& place) {
                edges.push_back(place.item.start);
                edges.push_back(place.item.end);
            });
            auto const best = *std::ranges::min_element(edges, {}, [&](double e) { return std::abs(e - t); });
            auto const found = TimelineMagnets{shown.layout, -100, radius}.nearest(t);
            ASSERT_EQ(found.has_value(), std::abs(best - t) <= radius) << seed;
            if (found) {
                EXPECT_DOUBLE_EQ(std::abs(*found - t), std::abs(best - t));
            }
        }
    }
}
