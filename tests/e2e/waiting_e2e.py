#!/usr/bin/env python3
"""A wait in vain tells what there is instead: of a program that ended how it ended and what it said, else its windows."""

from harness import Session, check, main
from virtual_display import wait_until


def failure_of(action, *arguments):
    try:
        action(*arguments)
    except AssertionError as error:
        return str(error)
    raise AssertionError("it did not fail")


def run(arguments, display, home):
    program = display.start_program(["sh", "-c", "echo no such table >&2; exit 3"])
    told = failure_of(wait_until, lambda: display.windows("--name", "^never$"), "a window")
    check("waiting for a window" in told and "ended with 3" in told, "the exit status is told, and at once")
    check("no such table" in told, "so is what the program said")
    check(display.end_program(program) == 3, "it may be waited for all the same")
    program = display.start_program(["sh", "-c", "kill -SEGV $$"])
    told = failure_of(wait_until, lambda: display.windows("--name", "^never$"), "a window")
    check("ended by signal 11" in told, "so is the signal that ended it")
    display.end_program(program)

    session = Session(display, arguments, home)
    session.start()
    told = failure_of(wait_until, lambda: display.windows("--name", "^never$"), "a window", 2)
    check("waited 2 s in vain for a window" in told and "runs" in told, "a program that runs is told of")
    check(f"'{display.title(session.window)}' at (" in told and "has the keyboard" in told, "and its window")
    told = failure_of(display.end_program, session.process, 1)
    check("waited 1 s in vain for the end" in told, "a program that does not end is told of")
    display.programs.append(session.process)
    check(session.end() == 0, "ovedit ends well")


if __name__ == "__main__":
    main(run, __doc__)
