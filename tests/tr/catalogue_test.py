"""The translations in platform/tr/translations are whole: every text of the sources, and nothing else."""

import collections
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

from cpp_texts import literals
from sources_test import SOURCE, marked_texts

FILES = sorted((SOURCE / "platform/tr/translations").glob("orvane_*.ts"))


class Message:
    def __init__(self, context, element):
        translation = element.find("translation")
        self.context = context
        self.source = element.find("source").text
        self.state = translation.get("type", "finished")
        self.isNumerus = element.get("numerus") == "yes"
        forms = translation.findall("numerusform")
        self.forms = [form.text or "" for form in forms] if forms else [translation.text or ""]

    def key(self):
        return self.context, self.source, self.isNumerus


def messages(file):
    for context in xml.etree.ElementTree.parse(file).getroot().iter("context"):
        for element in context.iter("message"):
            yield Message(context.find("name").text, element)


def menu_key(text):
    """The letter after a single ampersand, in lower case; empty where there is none."""
    found = re.search(r"&(\w)", text.replace("&&", ""))
    return found.group(1).lower() if found else ""


def faults(message):
    """What is wrong with one translation as it stands."""
    if message.state != "finished":
        yield f"is {message.state}"
        return
    markers = sorted(re.findall(r"%L?\d|%n", message.source))
    for form in message.forms:
        if not form.strip() and message.source.strip():
            yield "is empty"
        if sorted(re.findall(r"%L?\d|%n", form)) != markers:
            yield f"has other places for values than its source: {form!r}"
        if bool(menu_key(form)) != bool(menu_key(message.source)):
            yield f"has a key where its source has none, or none where that has one: {form!r}"
        if form.rstrip().endswith("...") != message.source.rstrip().endswith("..."):
            yield f"is of another end than its source: {form!r}"
        if sorted(re.findall(r"</?\w+", form)) != sorted(re.findall(r"</?\w+", message.source)) \
                and not message.source.startswith("<Update"):
            yield f"has other marks of HTML than its source: {form!r}"
        if re.search(r"[^ ]  +[^ ]", form):
            yield f"has two blanks: {form!r}"


class Catalogue(unittest.TestCase):
    def test_there_is_a_german_one(self):
        self.assertIn("orvane_de.ts", [file.name for file in FILES])

    def test_every_translation_is_finished_and_fits_its_source(self):
        for file in FILES:
            wrong = [f"{message.context}: {message.source!r} {fault}" for message in messages(file)
                     for fault in faults(message)]
            self.assertEqual(wrong, [], f"in {file.name}")

    def test_numbers_have_all_forms_of_the_language(self):
        forms = {"orvane_de.ts": 2}
        for file in FILES:
            for message in messages(file):
                expected = forms[file.name] if message.isNumerus else 1
                self.assertEqual(len(message.forms), expected, f"{file.name}: {message.source}")

    def test_the_texts_are_those_of_the_sources(self):
        """As the tool finds them, and so that its next run would change nothing."""
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run([SOURCE / "scripts/update-translations", folder], check=True, timeout=100,
                           stdout=subprocess.DEVNULL)
            for file in FILES:
                now = collections.Counter(message.key() for message in messages(file))
                found = collections.Counter(message.key() for message in messages(pathlib.Path(folder) / file.name))
                self.assertEqual(sorted((found - now).elements()), [],
                                 f"missing in {file.name}: run scripts/update-translations and translate them")
                self.assertEqual(sorted((now - found).elements()), [],
                                 f"no longer in the sources: run scripts/update-translations ({file.name})")

    def test_the_tool_has_seen_every_marked_text(self):
        """Its parser knows older C++ than ours, and leaves out what it doesn't understand."""
        for file in FILES:
            known = {message.source for message in messages(file)}
            lost = [f"{where}: {text!r}" for where, text in marked_texts() if text not in known]
            self.assertEqual(lost, [], f"not in {file.name}")

    def test_contexts_are_classes(self):
        for file in FILES:
            for message in messages(file):
                self.assertRegex(message.context, r"^[A-Z]\w+$", f"{file.name}: {message.source}")

    def test_it_compiles(self):
        with tempfile.TemporaryDirectory() as folder:
            for file in FILES:
                said = subprocess.run([os.environ.get("LRELEASE", "lrelease"), file, "-qm", pathlib.Path(folder) / "out.qm"],
                                      check=True, timeout=60, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
                self.assertIn("0 unfinished", said.stdout)
                self.assertNotIn("Warning", said.stdout)


class Check(unittest.TestCase):
    """That the checks above can fail."""

    @staticmethod
    def message(source, *forms, state="finished"):
        made = Message.__new__(Message)
        made.context, made.source, made.state, made.forms, made.isNumerus = "Menus", source, state, forms, len(forms) > 1
        return made

    def test_finds_what_is_wrong(self):
        for wrong in (self.message("Rows", "", state="unfinished"), self.message("Rows", "Zeilen", state="vanished"),
                      self.message("Rows", " "), self.message("%1 of %2", "%1 von"), self.message("&Rows", "Zeilen"),
                      self.message("Rows", "&Zeilen"), self.message("Open...", "Öffnen"),
                      self.message("<b>%1</b>", "%1"), self.message("One two", "Eins  zwei"),
                      self.message("%n rows", "%n Zeile", "Zeilen")):
            self.assertNotEqual(list(faults(wrong)), [], (wrong.source, wrong.forms))

    def test_takes_what_is_right(self):
        for right in (self.message("&Rows", "&Zeilen"), self.message("%1 of %2", "von %2: %1"),
                      self.message("A && B", "A && B"), self.message("%n rows", "%n Zeile", "%n Zeilen"),
                      self.message("Open...", "Öffnen...")):
            self.assertEqual(list(faults(right)), [], right.source)


if __name__ == "__main__":
    if not FILES:
        sys.exit("there are no translations")
    unittest.main()
