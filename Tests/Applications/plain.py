"""A terminal, which tells of nothing and is worked by points, and Java."""

import os

from application import Application, center
from stage import Failed

SWING = """import javax.swing.*;
public class Words {
    public static void main(String[] arguments) {
        JFrame window = new JFrame("Words");
        JButton press = new JButton("Press me");
        press.addActionListener(event -> window.setTitle("pressed"));
        JCheckBox box = new JCheckBox("Tick me");
        box.addActionListener(event -> window.setTitle("ticked " + box.isSelected()));
        JTextField field = new JTextField(20);
        field.addActionListener(event -> window.setTitle(field.getText()));
        field.getAccessibleContext().setAccessibleName("Write here");
        JMenu file = new JMenu("File"), more = new JMenu("More");
        JMenuItem deepest = new JMenuItem("Deepest");
        deepest.addActionListener(event -> window.setTitle("deepest"));
        more.add(deepest);
        file.add(more);
        JMenuBar bar = new JMenuBar();
        bar.add(file);
        window.setJMenuBar(bar);
        JButton ask = new JButton("Ask me");
        ask.addActionListener(event -> { if (JOptionPane.showConfirmDialog(window, "Really?") == 0) window.setTitle("yes"); });
        String[] choices = new String[80];
        for (int i = 0; i < choices.length; ++i) choices[i] = "Choice " + i;
        JList<String> list = new JList<>(choices);
        list.addListSelectionListener(event -> window.setTitle(list.getSelectedValue()));
        JPanel panel = new JPanel();
        for (JComponent each : new JComponent[]{press, box, field, ask, new JScrollPane(list)}) panel.add(each);
        window.add(panel);
        window.setSize(700, 300);
        window.setLocation(300, 200);
        window.setVisible(true);
    }
}
"""


class XTerm(Application):
    needs, name = "/usr/bin/xterm", "XTerm"

    def list(self):
        """Why there is nothing to list is a sentence that says what to use instead."""
        try:
            self.elements()
        except Failed as said:
            if "ui_screenshot" in str(said):
                return
        raise Failed("nobody says that there is nothing")

    def by_point(self):
        frame = [window["frame"] for window in self.stage.windows() if window["application"] == self.name][0]
        self.middle = (frame["x"], frame["y"], frame["width"], frame["height"])
        self.click_point(self.middle)

    def text(self):
        mark = self.stage.path("mark")
        self.keys(f"echo Grüße, 世界 > {mark}\n")
        self.expect(lambda: os.path.exists(mark), "nothing was written")
        self.expect_text(mark, lambda text: text == "Grüße, 世界\n")

    def wheel(self):
        self.keys("seq 200 | sed s/$/.a.line/\n")
        x, y, width, height = self.middle
        self.scrolls_up(int(x) + 80, int(y) + 80)

    def scrolls_up(self, x, y):
        before = self.stage.picture().part(x - 60, y, 120, 40)
        said = self.stage.ui("scroll", "--x", x, "--y", y, "--down", -200, "--glide", 0.3, "--hold", 0.8)
        went = -int(said.split()[1])
        if before != self.stage.picture().part(x - 60, y + went, 120, 40) or went < 120:
            raise Failed(said.strip())


class Swing(Application):
    needs, name = "/usr/bin/javac", "Words"
    fewest_elements = 5

    def prepare(self):
        self.stage.entry("words.desktop", "Words", f"java {self.stage.write('Words.java', SWING)}\nStartupWMClass=Words")

    def by_title(self):
        self.click("Press me")
        self.expect_window("pressed")

    def by_id(self):
        self.click_element(self.one("Tick me"))
        self.expect_window("ticked true")

    def check_box(self):
        self.click("Tick me")
        self.expect_window("ticked false")

    def by_point(self):
        self.click_point(self.one("Press me").frame)
        self.expect_window("pressed")

    def submenu(self):
        self.path("File", "More", "Deepest")
        self.expect_window("deepest")

    def dialog(self):
        self.click("Ask me")
        self.click("Yes", "Button")
        self.expect_window("yes")

    def text(self):
        self.click("Write here")
        self.keys("Grüße, 世界!\n")
        self.expect_window("Grüße, 世界!")

    def row(self):
        self.click("Choice 3")
        self.expect_window("Choice 3")

    def far_element(self):
        self.click_element(self.bring("Choice 70", over=center(self.one("Choice 4").frame), down=100))
        self.expect_window("Choice 70")


APPLICATIONS = [XTerm, Swing]
