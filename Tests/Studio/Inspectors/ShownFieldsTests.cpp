#include "../TestProject.h"

#include <Tavaro/Studio/Inspectors/NumberText.h>
#include <Tavaro/Studio/Inspectors/ShownFields.h>

#include <gtest/gtest.h>

#include <QAbstractItemModelTester>

#include <cmath>
#include <limits>

using namespace tavaro;

namespace {

class ShownFieldsTest : public testing::Test {
protected:
    QStringList paths(ShownFields const& shown) const {
        QStringList paths;
        for (int row = 0; row < shown.rowCount(); ++row)
            paths.push_back(shown.index(row, 0).data(shown.roleNames().key("path")).toString());
        return paths;
    }

    TestProject project{DemoProject{}};
    InspectorModel model{project.open()};
};

}

TEST_F(ShownFieldsTest, groupsOfAPageShowEachFieldOnceAndNoneTheirCommonTitle) {
    model.inspectSection(QStringLiteral("screen"));
    QStringList const some{QStringLiteral("padding"), QStringLiteral("frame")};
    ShownFields all, group, rest;
    QAbstractItemModelTester const tester(&group);
    for (auto* each : {&all, &group, &rest}) each->setFields(&model);
    group.setOnly(some);
    rest.setWithout(some);
    EXPECT_EQ(paths(group), some);
    EXPECT_EQ(paths(all).size(), model.rowCount() - 1) << "the section's own row is the group's title";
    EXPECT_EQ(paths(group).size() + paths(rest).size(), paths(all).size());
    EXPECT_EQ(group.depth(), 1);
}

TEST_F(ShownFieldsTest, aFoldedSectionHidesWhatIsInsideOfIt) {
    model.inspectSection(QStringLiteral("intro"));
    ShownFields shown;
    shown.setFields(&model);
    EXPECT_EQ(paths(shown), QStringList{QString()}) << "what may be switched on stays to be seen";
    model.switchOn(QString(), true);
    auto const open = paths(shown).size();
    EXPECT_GT(open, 4);
    shown.toggle(QString());
    EXPECT_EQ(paths(shown), QStringList{QString()});
    shown.toggle(QString());
    EXPECT_EQ(paths(shown).size(), open);
}

TEST_F(ShownFieldsTest, aCaseIsShownOrLeftOutWithoutWhatIsInsideOfIt) {
    model.inspectSection(QStringLiteral("background"));
    model.set(QString(), QStringLiteral("linearGradient"));
    ShownFields inside;
    inside.setFields(&model);
    inside.setWithout({QString()});
    EXPECT_FALSE(paths(inside).contains(QString()));
    EXPECT_TRUE(paths(inside).contains(QStringLiteral("linearGradient.angle")));
}

TEST_F(ShownFieldsTest, whatNeedNotBeThereIsSwitchedOnWithAValueThatIsTaken) {
    int switched = 0;
    for (auto const* section : {"project", "cursor", "camera", "captions", "export", "intro", "voiceover"}) {
        model.inspectSection(QString::fromUtf8(section));
        auto const roles = model.roleNames();
        for (int row = 0; row < model.rowCount(); ++row) {
            auto const index = model.index(row);
            auto const editor = index.data(roles.key("editor")).toString();
            if (!index.data(roles.key("isOptional")).toBool() || editor == QStringLiteral("file")) continue;
            auto const path = index.data(roles.key("path")).toString();
            auto const before = encodeProject(project.document());
            EXPECT_TRUE(model.switchOn(path, true)) << section << " " << path.toStdString();
            EXPECT_TRUE(model.index(*model.rowOf(path.toStdString())).data(roles.key("isSet")).toBool());
            EXPECT_TRUE(model.switchOn(path, false));
            EXPECT_EQ(encodeProject(project.document()), before) << section << " " << path.toStdString();
            ++switched;
        }
    }
    EXPECT_GT(switched, 5);
}

TEST(NumberText, whatIsShownIsReadAsTheSameNumber) {
    struct Case {
        double value, factor, step;
        char const* shown;
    };
    for (auto const& each : {Case{0.35, 100, 0.01, "35"}, Case{1.5, 1, 0.05, "1.5"}, Case{-0.004, 1, 0.01, "0"},
                             Case{1234567, 1, 1, "1234567"}, Case{0.125, 100, 0.01, "12.5"}}) {
        auto const shown = NumberText::shown(each.value, each.factor, each.step);
        EXPECT_EQ(shown, QString::fromUtf8(each.shown));
        EXPECT_NEAR(NumberText::read(shown), each.value * each.factor, std::min(each.step * each.factor, 0.1) / 2);
    }
    EXPECT_EQ(NumberText::shown({}, 1, 1), QString());
    for (auto const* typed : {"1,5", " 1.5 %", "1.5px", "+1.50"}) EXPECT_EQ(NumberText::read(typed), 1.5) << typed;
    EXPECT_EQ(NumberText::read(QStringLiteral("−.5")), -0.5);
    for (auto const* typed : {"", "wide", "-", "."}) EXPECT_TRUE(std::isnan(NumberText::read(typed))) << typed;
}

TEST(NumberText, aSideThatNoNumberOfPixelsHoldsStaysOutOfEveryRange) {
    for (auto const* typed : {"4294968576", "99999999999999999999999999"}) {
        auto const size = NumberText::withPart(QSize(1920, 1080), "width", NumberText::read(typed)).toSize();
        EXPECT_EQ(size, QSize(std::numeric_limits<int>::max(), 1080)) << typed;
    }
    EXPECT_EQ(NumberText::withPart(QSize(1920, 1080), "height", -5).toSize(), QSize(1920, -5));
}

TEST(NumberText, aCodeKeepsHowMuchIsSeenThroughAColorUnlessItSaysSo) {
    auto const half = QColor::fromRgb(1, 2, 3, 128);
    for (auto const* typed : {"#ff0000", "ff0000", " red ", "f00"})
        EXPECT_EQ(NumberText::color(typed, half), QColor::fromRgb(255, 0, 0, 128)) << typed;
    EXPECT_EQ(NumberText::color("#40ff0000", half), QColor::fromRgb(255, 0, 0, 64));
    EXPECT_FALSE(NumberText::color("no color", half).isValid());
    EXPECT_EQ(NumberText::color(NumberText::code(half), half), half);
}
