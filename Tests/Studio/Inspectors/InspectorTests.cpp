#include "../RandomEdits.h"
#include "../TestProject.h"

#include <Tavaro/Studio/Inspectors/InspectedRecord.h>
#include <Tavaro/Studio/Inspectors/InspectorModel.h>

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include <fstream>

using namespace tavaro;

namespace {

template<class T> struct InList { using Type = void; };
template<class T> struct InList<std::vector<T>> { using Type = T; };

/// Calls `visit` with a value of each record that an inspector can show some of, at any depth.
template<class T, class Visit> void forEachRecordIn(T const& value, Visit const& visit) {
    if constexpr (detail::HasFieldEditor<T>) {
        return;
    } else if constexpr (detail::IsOptional<T>::value) {
        forEachRecordIn(typename T::value_type{}, visit);
    } else if constexpr (RecordType<T>) {
        visit(value);
        forEachField<T>([&](auto const& field) {
            auto const* facts = factsFor<T>(field.name);
            if (!facts || facts->access != FieldAccess::hidden) forEachRecordIn(value.*field.member, visit);
        });
    } else if constexpr (CaseType<T>) {
        [&]<class... Each>(std::type_identity<std::variant<Each...>>) {
            (forEachRecordIn(Each{}, visit), ...);
        }(std::type_identity<std::remove_cvref_t<decltype(value.content)>>{});
    }
}

template<class Visit> void forEachInspectedRecord(Visit const& visit) {
    DemoProject project;
    forEachRecordIn(project, visit);
    project.voiceover.emplace();
    forEachItemList(std::as_const(project), [&](auto const& items) {
        forEachRecordIn(typename std::remove_cvref_t<decltype(items)>::value_type{}, visit);
    });
    forEachRecordIn(AudioClip{}, visit); // of a track that there is not
}

/// A value that a field may have, other than the one it has.
QVariant another(FieldRow const& row) {
    auto const middle = (row.facts.least + row.facts.most) / 2;
    auto const number = row.facts.most > row.facts.least ? middle : 1.25;
    switch (row.editor) {
    case FieldEditor::number: return row.value.toDouble() == number ? row.facts.most : number;
    case FieldEditor::wholeNumber: return row.value.toLongLong() == 24 ? 25 : 24;
    case FieldEditor::toggle: return !row.value.toBool();
    case FieldEditor::choice:
        return toQString(row.choices[row.value.toString() == toQString(row.choices[0].name) ? 1 : 0].name);
    case FieldEditor::choices: return QVariantList{toQString(row.choices[row.value.toList().size() == 1 ? 1 : 0].name)};
    case FieldEditor::color: return QColor(row.value.value<QColor>().red() == 10 ? 11 : 10, 20, 30, 40);
    case FieldEditor::colors: return QVariantList{QColor(1, 2, 3), QColor(4, 5, 6, 7)};
    case FieldEditor::text: return QStringLiteral("2024, “so” = 1.5 \\ ") + row.value.toString();
    case FieldEditor::texts: return QVariantList{QStringLiteral("7"), QStringLiteral("a=b")};
    case FieldEditor::file:
        return row.value.toString() == QStringLiteral("one.file") ? QStringLiteral("two.file")
                                                                  : QStringLiteral("one.file");
    case FieldEditor::point: return QPointF(0.25, row.value.toPointF().y() == 0.5 ? 0.75 : 0.5);
    case FieldEditor::rect: return QRectF(0.125, 0.25, 0.5, row.value.toRectF().height() == 0.25 ? 0.5 : 0.25);
    case FieldEditor::size: return QSize(1280, row.value.toSize().height() == 720 ? 800 : 720);
    case FieldEditor::section: return !row.value.toBool();
    }
    return {};
}

std::vector<FieldRow> rowsOf(DemoProject const& project, std::variant<std::string_view, UUID> const& inspected) {
    if (auto const* section = std::get_if<std::string_view>(&inspected)) return sectionRows(project, *section);
    return itemRows(project, std::get<UUID>(inspected));
}

class Inspectors : public testing::Test {
protected:
    Inspectors() {
        for (auto const* name : {"one.file", "two.file"}) std::ofstream(project.package().assetURL(name)) << "media";
        QObject::connect(&model, &InspectorModel::refused,
                         [this](QString const& sentence) { refusals.push_back(sentence.toStdString()); });
    }

    void inspect(std::variant<std::string_view, UUID> const& inspected) {
        if (auto const* section = std::get_if<std::string_view>(&inspected))
            model.inspectSection(toQString(*section));
        else
            model.inspectItems(std::vector{std::get<UUID>(inspected)});
    }

    /// Sections, and an item of each kind.
    std::vector<std::variant<std::string_view, UUID>> everything() const {
        std::vector<std::variant<std::string_view, UUID>> all;
        for (auto const name : sectionNames()) all.emplace_back(name);
        std::set<ItemKind> kinds;
        forEachItem(project.document(), [&](auto const& item) {
            if (kinds.insert(kindOf(item)).second) all.emplace_back(item.id);
        });
        return all;
    }

    std::ptrdiff_t doneSteps() const { return std::ranges::count(project->steps(), false, &ListedStep::isUndone); }

    static DemoProject document() {
        RandomDocument random(11);
        auto made = fullDocument(random);
        made.sourceSize = {1920, 1080};
        std::erase_if(made.timeline.clips, [](VideoClip const& clip) { return clip.speed == 0; });
        made.timeline.closeGaps();
        return made;
    }

    TestProject project{document()};
    InspectorModel model{project.open()};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    std::vector<std::string> refusals;
};

}

TEST(FieldTable, everyFieldOfEveryInspectedRecordHasALineAndEveryLineIsOfAField) {
    int records = 0;
    forEachInspectedRecord([&]<class R>(R const&) {
        ++records;
        forEachField<R>([&](auto const& field) {
            auto const* facts = factsFor<R>(field.name);
            EXPECT_TRUE(facts) << field.name << " of a record with " << fieldCount<R> << " fields";
            EXPECT_TRUE(!facts || facts->access == FieldAccess::hidden || !facts->label.empty()) << field.name;
        });
        for (auto const& facts : factsOf<R>) {
            bool isField = false;
            forEachField<R>([&](auto const& field) { isField = isField || field.name == facts.name; });
            EXPECT_TRUE(isField) << facts.name;
        }
    });
    EXPECT_GT(records, 40);
}

namespace {
struct Unheard {
    double firstThing = 1;
    std::optional<RGBAColor> otherThing;
    static constexpr auto fields =
        std::tuple{field("firstThing", &Unheard::firstThing), field("otherThing", &Unheard::otherThing)};
};
static_assert(listsEveryField<Unheard>);
}

TEST(FieldTable, aFieldWithoutALineIsShownUnderItsName) {
    auto const rows = FieldRows::of(Unheard{});
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].label, "First Thing");
    EXPECT_EQ(rows[0].editor, FieldEditor::number);
    EXPECT_EQ(rows[1].editor, FieldEditor::color);
    EXPECT_TRUE(rows[1].isOptional);
}

TEST_F(Inspectors, aPathOfAnItemLeadsToIt) {
    forEachItem(project.document(), [&](auto const& item) {
        if (kindOf(item) == ItemKind::clip) return; // no patch changes those
        auto const paths = pathsOfItems(project.document(), std::vector{item.id});
        ASSERT_EQ(paths.size(), 1u);
        auto edited = project.document();
        auto const fresh = UUID::random();
        operations::apply(edited, std::vector<operations::FieldChange>{{paths[0] + ".id", fresh.text()}});
        EXPECT_FALSE(visitItem(edited, item.id, [](auto const&) {})) << paths[0];
        EXPECT_TRUE(visitItem(edited, fresh, [](auto const&) {})) << paths[0];
    });
}

TEST_F(Inspectors, everyFieldTakesAnotherValueInOneStepThatUndoTakesBack) {
    int fields = 0;
    for (auto const& inspected : everything()) {
        inspect(inspected);
        for (auto const& row : rowsOf(project.document(), inspected)) {
            SCOPED_TRACE(row.label);
            if (row.facts.access != FieldAccess::editable || (row.editor == FieldEditor::section && !row.isOptional))
                continue;
            auto const path = toQString(row.path);
            auto const steps = doneSteps();
            auto const before = encodeProject(project.document());
            auto const given = another(row);
            EXPECT_TRUE(model.set(path, given)) << (refusals.empty() ? "" : refusals.back());
            EXPECT_EQ(doneSteps(), steps + 1);
            EXPECT_EQ(project->undoName(), "Change " + row.label);
            EXPECT_EQ(encodeJSON(toJSON(model.value(path))), encodeJSON(toJSON(given)));
            EXPECT_FALSE(model.set(path, given)); // it has that value: no step
            project->undo();
            EXPECT_EQ(encodeProject(project.document()), before);
            ++fields;
        }
    }
    EXPECT_GT(fields, 120);
}

TEST_F(Inspectors, everySliderGoesFromEndToEnd) {
    for (auto const& inspected : everything()) {
        inspect(inspected);
        for (auto const& row : rowsOf(project.document(), inspected)) {
            if (row.facts.most <= row.facts.least || row.facts.access != FieldAccess::editable) continue;
            for (double const end : {row.facts.least, row.facts.most}) model.set(toQString(row.path), end);
            EXPECT_TRUE(refusals.empty()) << row.label << ": " << refusals.back();
        }
    }
}

TEST_F(Inspectors, eachCaseShowsItsOwnFields) {
    model.inspectSection(QStringLiteral("background"));
    for (auto const name : BackgroundStyle::caseNames) {
        // An image is chosen with its file.
        QVariantMap const image{
            {QStringLiteral("image"), QVariantMap{{QStringLiteral("assetName"), QStringLiteral("one.file")}}}};
        model.set(QString(), name == "image" ? QVariant(image) : QVariant(toQString(name)));
        EXPECT_EQ(model.data(model.index(0), model.roleNames().key("value")).toString().toStdString(), name);
        for (auto const& row : sectionRows(project.document(), "background")) {
            if (row.path.empty() || row.editor == FieldEditor::section) continue;
            EXPECT_TRUE(row.path.starts_with(name)) << row.path;
            EXPECT_TRUE(model.set(toQString(row.path), another(row))) << row.path;
        }
    }
}

TEST_F(Inspectors, whatDoesNotFitIsRefusedInASentenceAndChangesNothing) {
    model.inspectSection(QStringLiteral("screen"));
    auto const before = encodeProject(project.document());
    EXPECT_FALSE(model.set(QStringLiteral("padding"), 7));
    EXPECT_FALSE(model.set(QStringLiteral("frame"), QStringLiteral("hologram")));
    EXPECT_FALSE(model.set(QStringLiteral("padding"), QStringLiteral("wide")));
    model.inspectSection(QStringLiteral("camera"));
    EXPECT_FALSE(model.set(QStringLiteral("lutAsset"), QStringLiteral("missing.cube")));
    ASSERT_EQ(refusals.size(), 4u);
    EXPECT_EQ(refusals[0], "Padding cannot be 700 %.");
    for (auto const& refusal : refusals) EXPECT_TRUE(refusal.ends_with('.')) << refusal;
    EXPECT_EQ(encodeProject(project.document()), before);
    EXPECT_TRUE(project->steps().empty());
    EXPECT_FALSE(model.set(QStringLiteral("noSuchField"), 1));
}

TEST_F(Inspectors, aDraggedSliderIsOneStep) {
    model.inspectSection(QStringLiteral("screen"));
    model.beginChange();
    for (int i = 1; i <= 20; ++i) model.set(QStringLiteral("padding"), i / 100.0);
    model.endChange();
    EXPECT_EQ(project->steps().size(), 1u);
    model.set(QStringLiteral("padding"), 0.3);
    EXPECT_EQ(project->steps().size(), 2u);
    project->undo();
    EXPECT_EQ(model.value(QStringLiteral("padding")).toDouble(), 0.2);
    project->undo();
    EXPECT_EQ(model.value(QStringLiteral("padding")).toDouble(), 0);
}

TEST_F(Inspectors, itemsAreChangedTogetherAndOnesThatAreGoneAreLeftOut) {
    auto const& zooms = project.document().zoomEvents;
    std::vector<UUID> const ids{zooms[0].id, zooms[1].id, zooms[2].id};
    project->edit("Zoom", [](DemoProject& edited) { edited.zoomEvents[1].scale = 3; });
    model.inspectItems(ids);
    auto const isMixed = [&](char const* path) {
        return model.data(model.index(*model.rowOf(path)), model.roleNames().key("isMixed")).toBool();
    };
    EXPECT_TRUE(isMixed("scale"));
    EXPECT_FALSE(isMixed("easing"));
    auto const steps = project->steps().size();
    EXPECT_TRUE(model.set(QStringLiteral("scale"), 2.25));
    EXPECT_EQ(project->steps().size(), steps + 1);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(zooms[static_cast<std::size_t>(i)].scale, 2.25);
    EXPECT_FALSE(isMixed("scale"));

    project.editOutside([&](DemoProject& edited) { edited.zoomEvents.erase(edited.zoomEvents.begin()); });
    project->refresh();
    EXPECT_EQ(model.title(), QStringLiteral("2 Items"));
    EXPECT_TRUE(model.set(QStringLiteral("scale"), 4));
    project->edit("Delete", [](DemoProject& edited) { edited.zoomEvents.clear(); });
    EXPECT_TRUE(model.isEmpty());
    EXPECT_EQ(model.rowCount(), 0);
}

TEST_F(Inspectors, aClipsSpeedRetimesWhatIsOverIt) {
    auto const clip = project.document().timeline.clips[0];
    model.inspectItems(std::vector{clip.id});
    EXPECT_TRUE(model.set(QStringLiteral("speed"), clip.speed * 2));
    EXPECT_DOUBLE_EQ(project.document().timeline.clips[0].duration, clip.duration / 2);
    EXPECT_TRUE(model.set(QStringLiteral("isMuted"), true));
    EXPECT_FALSE(model.set(QStringLiteral("start"), 3)); // is where the clips before it end
}
