"""Commands, options, help and exit codes."""

import re
import unittest

from program import SOURCE, ProgramTest

COMMANDS = ["info", "tables", "fields", "select", "create", "add", "set", "mark", "crunch", "nextid", "expr"]


class Help(ProgramTest):
    def test_the_program_lists_its_commands_and_exit_codes(self):
        for option in ("--help", "-h"):
            text = self.output(option)
            for command in COMMANDS:
                self.assertRegex(text, rf"\n  {command}\b")
            self.assertIn("Exit status: 0", text)

    def test_every_command_has_its_own(self):
        for command in COMMANDS[:-1]:
            text = self.output(command, "--help")
            self.assertRegex(text, rf"^Usage: ovdb {command} \[options\] (DB|PATH)")
            self.assertEqual(text, self.output(command, "-h"))

    def test_lines_fit_a_terminal(self):
        for arguments in [["--help"]] + [[command, "--help"] for command in COMMANDS[:-1]]:
            for line in self.lines(*arguments):
                self.assertLessEqual(len(line), 84)

    def test_of_select_tells_every_operation(self):
        text = self.output("select", "--help")
        for option in ("subset E", "sort F,F", "reverse", "unique", "join T", "outer-join T", "left-join T",
                       "no-join T", "theta-join T E", "group F,F", "ungroup", "sever T", "separate T",
                       "fields F,F", "format FORMAT", "limit N", "count"):
            self.assertRegex(text, rf"\n  --{option}  ")

    def test_the_manual_page_has_all_commands_and_options(self):
        page = (SOURCE / "packaging/ovdb.1").read_text().replace("\\-", "-")
        for command in COMMANDS:
            self.assertIn(f"ovdb {command}", page)
            text = self.output(command, "--help") if command != "expr" else ""
            for option in re.findall(r"^  (?:-\w, )?(--[a-z-]+)", text, re.M):
                self.assertRegex(page, rf"{option}\b", option)

    def test_works_without_a_database(self):
        self.assertIn("Usage: ovdb select", self.output("select", "no/such.table", "--sort", "x", "--help"))

    def test_version(self):
        self.assertRegex(self.output("--version"), r"^ovdb \d+\.\d+\.\d+\n$")
        self.assertEqual(self.output("-v"), self.output("select", "--version"))


class Usage(ProgramTest):
    def test_no_command(self):
        self.assertIn("no command is given\n'ovdb --help'", self.failure(2))

    def test_unknown_commands_and_options_with_near_names(self):
        self.assertIn("there is no command 'selct'; did you mean select?", self.failure(2, "selct"))
        self.assertIn("there is no command 'xyzzy'\n", self.failure(2, "xyzzy"))
        self.assertIn("'select' has no option --sbset; did you mean --subset?",
                      self.failure(2, "select", self.table("site"), "--sbset", "lat > 3"))
        self.assertIn("'tables' has no option --subset", self.failure(2, "tables", self.database, "--subset", "1"))
        self.assertIn("no option --count before a command", self.failure(2, "--count"))
        self.assertIn("'info' has no option -x", self.failure(2, "info", "-x", self.database))

    def test_values_that_are_missing_or_too_many(self):
        self.assertIn("--subset: E is missing behind it", self.failure(2, "select", self.table("site"), "--subset"))
        self.assertIn("--theta-join: E is missing behind it",
                      self.failure(2, "select", self.table("site"), "--theta-join", "arrival"))
        self.assertIn("--count takes no value", self.failure(2, "select", self.table("site"), "--count=1"))
        self.assertIn("DB.TABLE is missing behind 'select'", self.failure(2, "select"))
        self.assertIn("'b' is one too many", self.failure(2, "info", self.database, "b"))

    def test_values_that_make_no_sense(self):
        site = self.table("site")
        for limit in ("-1", "x", "", "1.5", "99999999999999999999"):
            self.assertIn("a number of rows is expected", self.failure(2, "select", site, "--limit", limit))
        self.assertIn("there are text csv tsv json", self.failure(2, "select", site, "--format", "xml"))
        for fields in ("", "sta,,lat", "sta,", " "):
            self.assertIn("a name is missing", self.failure(2, "select", site, "--fields", fields))
            self.assertIn("a name is missing", self.failure(2, "select", site, "--sort", fields))

    def test_modifiers_of_a_sort_stand_behind_it(self):
        site = self.table("site")
        self.assertIn("put it behind --sort", self.failure(2, "select", site, "--reverse"))
        self.assertIn("put it behind --sort",
                      self.failure(2, "select", site, "--sort", "sta", "--subset", "lat > 0", "--unique"))

    def test_forms_of_options(self):
        site = self.table("site")
        usual = self.output("select", site, "--limit", "1", "--fields", "sta")
        self.assertEqual(usual, "AAK   \n")
        self.assertEqual(self.output("select", "--limit=1", "--fields=sta", site), usual)
        self.assertEqual(self.output("select", "--limit", "1", "--fields", " sta ", "--", site), usual)
        self.assertEqual(self.output("select", site, "--subset=sta=='AAK'", "--fields", "sta"), usual)
        # A value may begin with a dash.
        self.assertEqual(self.output("select", site, "--subset", "-lat < -43", "--count"), "2\n")

    def test_a_table_has_to_be_named(self):
        message = self.failure(2, "select", self.database)
        self.assertIn(f"no table is named; give {self.database}.TABLE", message)


if __name__ == "__main__":
    unittest.main()
