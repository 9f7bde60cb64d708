"""Each rule of Tools/check-structure finds what it is there for, in small trees that break it."""

import os
import subprocess
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

TABLE = """
| folder | what it holds |
| --- | --- |
| `TavaroCore/Values`, `Timeline` | values; clips |
| `TavaroMedia/Movie` | movies |
| `Tavaro/Commands` | the program |
| `Tests` | tests |
"""

RECORD = "struct Clip {\n    static constexpr auto fields = std::tuple{};\n};\n"

GOOD = {
    "HACKING.md": TABLE,
    "TavaroCore/Values/Point.h": "namespace Inner {\n" + RECORD + "static_assert(listsEveryField<Clip>);\n}\n",
    "TavaroCore/Timeline/Clip.h": "#include <TavaroCore/Values/Point.h>\n// std::thread is not for us\n",
    "TavaroCore/Timeline/Clip.cpp": "#include <TavaroCore/Timeline/Clip.h>\n"
                                    "#include <TavaroCore/Timeline/Private/Gap.h>\n"
                                    "auto const cores = std::thread::hardware_concurrency();\n",
    "TavaroCore/Timeline/Private/Gap.h": "",
    "TavaroMedia/Movie/Movie.h": "#include <TavaroCore/Timeline/Clip.h>\n",
    "Tavaro/Commands/Command.h": "#include <TavaroMedia/Movie/Movie.h>\n",
    "Tests/Core/GapTests.cpp": "#include <TavaroCore/Timeline/Private/Gap.h>\nstd::thread beside;\n",
}


def check(changes, *options):
    with tempfile.TemporaryDirectory() as root:
        for path, text in (GOOD | changes).items():
            file = os.path.join(root, path)
            os.makedirs(os.path.dirname(file), exist_ok=True)
            with open(file, "w", encoding="utf-8") as out:
                out.write(text)
        done = subprocess.run([os.path.join(ROOT, "Tools/check-structure"), *options, root],
                              capture_output=True, text=True, check=False)
    return done.returncode, done.stdout


class CheckStructure(unittest.TestCase):
    def assert_found(self, changes, *faults):
        code, output = check(changes)
        self.assertEqual(code, 1)
        lines = output.splitlines()
        self.assertEqual(len(lines), len(faults), output)
        for line, fault in zip(lines, faults):
            self.assertTrue(line.startswith(fault), f"{line}\nshould start with {fault}")

    def test_a_good_tree_passes(self):
        self.assertEqual(check({}), (0, ""))

    def test_a_folder_above_may_not_be_used(self):
        self.assert_found({"TavaroCore/Values/Point.h": "\n#include <TavaroCore/Timeline/Clip.h>\n"},
                          "TavaroCore/Values/Point.h:2: TavaroCore/Values may not use TavaroCore/Timeline")
        self.assert_found({"TavaroCore/Timeline/Private/Gap.h": '#include "../../../TavaroMedia/Movie/Movie.h"\n'},
                          "TavaroCore/Timeline/Private/Gap.h:1: TavaroCore/Timeline may not use TavaroMedia/Movie")

    def test_the_table_names_each_folder_once(self):
        self.assert_found({"HACKING.md": TABLE.replace("`, `Timeline`", "`")},
                          "TavaroCore/Timeline/Clip.cpp:1: HACKING.md's table does not have the folder")
        self.assert_found({"HACKING.md": TABLE + "| `TavaroCore/Values` | again |\n"},
                          "HACKING.md:8: TavaroCore/Values is in the table twice",
                          "HACKING.md:8: TavaroCore/Values is apart")
        self.assert_found({"HACKING.md": TABLE.replace("/Movie", "/Movie`, `Sound")},
                          "HACKING.md:5: There is no folder TavaroMedia/Sound")
        self.assert_found({"HACKING.md": TABLE.replace("/Movie", "")},
                          "HACKING.md:5: TavaroMedia is a library: name its folders")

    def test_private_headers_stay_inside(self):
        gap = "#include <TavaroCore/Timeline/Private/Gap.h>\n"
        self.assert_found({"TavaroMedia/Movie/Movie.h": GOOD["TavaroMedia/Movie/Movie.h"] + gap,
                           "Tests/Media/MovieTests.cpp": gap},
                          "TavaroMedia/Movie/Movie.h:2: TavaroCore/Timeline/Private/Gap.h is private to TavaroCore",
                          "Tests/Media/MovieTests.cpp:1: TavaroCore/Timeline/Private/Gap.h is private to TavaroCore")

    def test_what_nobody_outside_includes_is_private(self):
        self.assert_found({"TavaroCore/Values/Color.h": "",
                           "TavaroCore/Timeline/Private/Gap.h": "#include <TavaroCore/Values/Color.h>\n",
                           "Tests/Core/ColorTests.cpp": "#include <TavaroCore/Values/Color.h>\n"},
                          "TavaroCore/Values/Color.h:1: Only TavaroCore includes this header, so its place is "
                          "TavaroCore/Values/Private/Color.h")

    def test_a_source_is_named_for_its_header(self):
        self.assert_found({"TavaroCore/Timeline/Cut.cpp": GOOD["TavaroCore/Timeline/Clip.cpp"]},
                          "TavaroCore/Timeline/Cut.cpp:1: A source includes the header that it implements first")
        self.assert_found({"TavaroCore/Timeline/Gap.cpp": "#include <TavaroCore/Timeline/Clip.h>\n"
                                                          "#include <TavaroCore/Timeline/Private/Gap.h>\n"},
                          "TavaroCore/Timeline/Gap.cpp:1: A source includes the header that it implements first")

    def test_a_header_has_the_source_of_its_name(self):
        gap = "namespace a {\nclass Gap {\npublic:\n    int width() const { return f(1); }\n    %s\n};\n}\n"
        for declaration, name in (("int height() const;", "height"), ("Gap(int a, double b = f(2));", "Gap")):
            self.assert_found({"TavaroCore/Timeline/Private/Gap.h": gap % declaration},
                              f"TavaroCore/Timeline/Private/Gap.h:5: {name} is declared here, but there is no")
        for declaration in ("Gap() = default;", "virtual int depth() = 0;", "template<class T> void f(T x);",
                            "using F = int(int);", "std::function<int()> f;", "static_assert(sizeof(int));",
                            "int a = f(2);"):
            self.assertEqual(check({"TavaroCore/Timeline/Private/Gap.h": gap % declaration}), (0, ""), declaration)
        source = "#include <TavaroCore/Timeline/Private/Gap.h>\n"
        self.assertEqual(check({"TavaroCore/Timeline/Private/Gap.h": gap % "int height() const;",
                                "TavaroCore/Timeline/Gap.cpp": source}), (0, ""))

    def test_records_check_that_they_list_every_field(self):
        nested = "class Track {\n" + RECORD + "};\nstatic_assert(listsEveryField<Track::Clipping>);\n"
        self.assert_found({"Tavaro/Commands/Command.h": GOOD["Tavaro/Commands/Command.h"] + nested},
                          "Tavaro/Commands/Command.h:4: Nothing checks that Clip lists every field")
        self.assertEqual(check({"Tavaro/Commands/Track.h": nested.replace("Clipping", "Clip")}), (0, ""))

    def test_threads_start_in_one_place(self):
        for start in ("std::thread t", "std::jthread t", "std::async(work)", "pthread_create(&t)"):
            self.assert_found({"Tavaro/Commands/Run.cpp": "/* a\nb */\n" + start + ";\n"},
                              f"Tavaro/Commands/Run.cpp:3: {start.split('(')[0].split(' ')[0]}: threads are started")

    def test_only_programs_talk(self):
        for words in ('fmt::print("a");', "std::cout << 1;", 'std::fprintf(stderr, "a");', "#include <CLI/CLI.hpp>"):
            found = words.split("(")[0].split(" <<")[0]
            self.assert_found({"TavaroMedia/Movie/Movie.h": GOOD["TavaroMedia/Movie/Movie.h"] + words},
                              f"TavaroMedia/Movie/Movie.h:2: {found}: a library prints nothing")
            self.assertEqual(check({"Tavaro/Commands/Terminal.cpp": words + "\n// std::cout\n"}), (0, ""))

    def test_programs_print_in_one_place(self):
        self.assertEqual(check({"Tavaro/Commands/Run.cpp": "#include <CLI/CLI.hpp>\n"}), (0, ""))
        self.assert_found({"Tavaro/Commands/Run.cpp": 'fmt::print("a");\n'},
                          "Tavaro/Commands/Run.cpp:1: fmt::print: the commands print through Tavaro/Commands/Terminal.h")

    def test_the_drawing_marks_arrows_upwards(self):
        code, drawing = check({"TavaroCore/Values/Point.h": "#include <TavaroMedia/Movie/Movie.h>\n"}, "--graph")
        self.assertEqual(code, 0)
        self.assertIn("TavaroCore/Values    ↑TavaroMedia/Movie", drawing)
        self.assertIn("TavaroMedia/Movie    ↓TavaroCore/Timeline\n", drawing)


if __name__ == "__main__":
    unittest.main()
