"""Texts in the sources that the user would see and that pass the translation by."""

import os
import pathlib
import re
import unittest

from cpp_texts import literals

SOURCE = pathlib.Path(os.environ.get("ORVANE_SOURCE", pathlib.Path(__file__).resolve().parents[2]))
FOLDERS = ("apps/ovedit", "views", "models", "platform/plot")

TRANSLATING = {"tr", "noop", "translate", "QT_TR_NOOP", "QT_TRANSLATE_NOOP", "QT_TRANSLATE_N_NOOP"}

# Calls that show their texts, or make something that does. Every letter in them is looked at.
SHOWING = {
    "QAction", "QCheckBox", "QGroupBox", "QLabel", "QMenu", "QMessageBox", "QPushButton", "QRadioButton", "QToolButton",
    "about", "addAction", "addButton", "addItem", "addItems", "addMenu", "addRow", "addTab", "askForText", "critical",
    "drawText", "getDouble", "getExistingDirectory", "getInt", "getItem", "getMultiLineText", "getOpenFileName",
    "getSaveFileName", "getText", "information", "insertTab", "qovutil_showError", "question", "setAccessibleDescription",
    "setAccessibleName", "setButtonText", "setCancelButtonText", "setDetailedText", "setFormat", "setHeaderLabels",
    "setHorizontalHeaderLabels", "setHtml", "setInformativeText", "setLabelText", "setOkButtonText", "setPlaceholderText",
    "setPlainText", "setPrefix", "setSpecialValueText", "setStatusTip", "setSuffix", "setTabText", "setTabToolTip",
    "setText", "setTitle", "setToolTip", "setWhatsThis", "setWindowTitle", "showMessage", "showText", "warning",
}

# What may stand between such a call and its text: the text is shown all the same.
PASSING_ON = {"", "{", "QString", "QStringList", "QStringLiteral", "QLatin1String", "fromUtf8", "fromLatin1", "arg"}

# Calls whose texts only programs and their makers read.
UNSEEN = {
    "complain": "the terminal's, which speaks English: see docs/translation.md",
    "elog_log": "the error log, which is English",
    "guarded": "names a place for the error log",
    "loggingErrors": "names a place for the error log",
    "QKeySequence": "keys, which the toolkit translates",
    "setStyleSheet": "a style sheet",
    "setDefaultStyleSheet": "a style sheet",
    "setNumberFormat": "a format of spreadsheets",
    "fail": "names a place for the error log",
}

# Single texts that read as if the user saw them, each by file and text, with the reason why it stands as it is.
ALLOWED = {
    ("apps/ovedit/application.cpp", "Failed to open database"): "looked for, not shown",
    ("apps/ovedit/language_menu.cpp", "English"): "a language by its own name",
    ("apps/ovedit/settings.cpp", "Orvane"): "the folder of the settings",
    ("models/tooltip_database.cpp", "Dblocks:"): "a label of the library's own, the same everywhere",
    ("models/tooltip_database.cpp", "Dbidserver:"): "a label of the library's own, the same everywhere",
    ("models/tooltip_field.cpp", "Size:"): "meant to stay as it is",
    ("models/tooltip_field.cpp", "(zero offset)"): "meant to stay as it is",
    ("models/tooltip_field.cpp", "No"): "meant to stay as it is",
    ("models/orvanedatabasemodel.cpp", "OrvaneTableModel*"): "the name of a type",
    ("models/orvanetablemodel.cpp", "OrvaneTableModel: no such column"): "begins with a class, as exceptions do",
    ("apps/ovedit/menus.cpp", "UTC"): "the name of a zone",
    ("models/library_reason.cpp", ": No view of '%1' was made"): "goes on after the name of a method",
    ("models/orvanetablemodel_derivations.cpp", ": The database is gone"): "goes on after the name of a method",
    ("views/orvanerowview.cpp", "**ILLEGAL VALUE**"): "beside INVALID, NULL and SCRATCH, which are typed as well",
    ("apps/ovedit/main_window.cpp", "ovedit"): "the name of the program",
    ("apps/ovedit/start_page.cpp", "ovedit"): "the name of the program",
}
TERMINAL = {"apps/ovedit/command_line.cpp": "answers on the terminal, before any catalogue is loaded"}

KEYS = re.compile(r"(?:(?:Ctrl|Shift|Alt|Meta)\+)+\S+")
COLOUR = re.compile(r"light \w+")
METHOD = re.compile(r"\w+::(?:\w+\b)?")


def own_name(call):
    return call.split("::")[-1]


def shown_part(text):
    """A text without its HTML, and without what stands for values in it."""
    return re.sub(r"%L?\d|%n|&\w+;", " ", re.sub(r"<[^<>]*>", " ", text)).strip()


def reads_as_text(text):
    """Several words, or one that begins as a label does."""
    return bool(re.search(r"[A-Za-z]{2,}", text) and
                (re.search(r"[A-Za-z]{2,}[,.:;]? +[A-Za-z]", text) or re.match(r"\W*[A-Z][a-z]+", text)))


def showing_call(calls):
    """The call that shows a text with these calls around it, or None."""
    for call in calls:
        if own_name(call) in SHOWING:
            return call
        if own_name(call) not in PASSING_ON:
            return None
    return None


def is_bypass(file, literal):
    calls = [own_name(call) for call in literal.calls]
    if calls and (calls[0] in TRANSLATING or calls[0] == "[") or any(call in UNSEEN for call in calls):
        return False
    text = shown_part(literal.text)
    if file in TERMINAL or (file, text) in ALLOWED or (file, literal.text) in ALLOWED:
        return False
    if showing_call(literal.calls) and re.search(r"[A-Za-z]{2,}", text):
        return True
    if KEYS.fullmatch(text) or COLOUR.fullmatch(text) or METHOD.match(text):
        return False
    return reads_as_text(text)


def files():
    for folder in FOLDERS:
        for file in sorted((SOURCE / folder).rglob("*")):
            if file.suffix in (".cpp", ".h"):
                yield file.relative_to(SOURCE).as_posix(), file.read_text(encoding="utf-8")


def marked_texts():
    """(place, text) of all texts that are given to a translating call as they stand."""
    for file, source in files():
        for literal in literals(source):
            if literal.calls and own_name(literal.calls[0]) in ("tr", "noop") and literal.isFirst:
                yield f"{file}:{literal.line}", literal.text


def bypasses(file, source):
    return [literal for literal in literals(source) if is_bypass(file, literal)]


class Sources(unittest.TestCase):
    def test_every_text_that_is_shown_passes_through_the_translation(self):
        found = [f"{file}:{literal.line}: {literal.text!r}" for file, source in files()
                 for literal in bypasses(file, source)]
        self.assertEqual(found, [], "give them to tr() or OvTranslation::noop(), or say in ALLOWED why not")

    def test_no_exception_is_outlived_by_its_text(self):
        texts = {(file, text) for file, source in files() for literal in literals(source)
                 for text in (literal.text, shown_part(literal.text))}
        self.assertEqual([key for key in ALLOWED if key not in texts], [])

    def test_there_are_texts_at_all(self):
        self.assertGreater(len(list(marked_texts())), 300)


class Scan(unittest.TestCase):
    """That the scan finds what it is there for."""

    def found(self, code):
        return [literal.text for literal in bypasses("views/some.cpp", code)]

    def test_finds_texts_given_to_widgets(self):
        for code in ('label->setText("ok");', 'auto *b = new QPushButton("ok");', 'menu.addAction(QString("ok"));',
                     'QMessageBox::warning(this, tr("Save"), "no");', 'label->setText("<b>ok</b> " + name);',
                     'setWindowTitle(QStringLiteral("%1 ok").arg(name));', 'tree->setHeaderLabels({tr("Name"), "type"});',
                     'label->setText(isGood ? tr("Good") : "bad");', 'throw std::runtime_error("no good file");'):
            self.assertEqual(len(self.found(code)), 1, code)

    def test_finds_texts_that_wait_in_tables(self):
        self.assertEqual(self.found('const Command commands[] = {{"open", "&Open...", "Ctrl+O", "Open a file"}};'),
                         ["&Open...", "Open a file"])

    def test_joins_pieces(self):
        self.assertEqual(self.found('f("one "\n  "two");'), ["one two"])

    def test_leaves_what_is_translated_or_not_shown(self):
        for code in ('label->setText(tr("Good"));', 'label->setText(OvTranslation::tr("Good %1").arg(1));',
                     '// "A comment with words"\n', '#include "Some Header"\n', 'config["show_tooltips"];',
                     'label->setText(config["font size"].toString());', 'setObjectName("openPath");',
                     'elog_log("can\'t read %s", name);', 'R{"x", OvTranslation::noop("A text")};',
                     'throw std::runtime_error("QDbptr::getX: Not good");', 'const int n = 64\'000; f("k");'):
            self.assertEqual(self.found(code), [], code)


if __name__ == "__main__":
    unittest.main()
