"""A display of our own with a window manager, and the mouse, keyboard and camera of it."""

import os
import shutil
import signal
import subprocess
import tempfile
import time

PROGRAMS = ("Xvfb", "openbox", "xdotool", "xclip", "import")


def missing_programs():
    return [name for name in PROGRAMS if shutil.which(name) is None]


open_displays = []


def wait_until(condition, what, seconds=60):
    """The first true answer of condition(). Fails when there is none in time, or when a program under test ends
    meanwhile, and tells what there is instead."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        answer = condition()
        if answer:
            return answer
        for display in open_displays:
            display.require_programs(what)
        time.sleep(0.1)
    seen = "".join("\n" + display.state() for display in open_displays)
    raise AssertionError(f"waited {seconds} s in vain for {what}{seen}")


class Program:
    """A program under test, with what it says on its standard error."""

    def __init__(self, command, **options):
        self.command = list(map(str, command))
        self.said = tempfile.TemporaryFile()
        self.process = subprocess.Popen(self.command, stdout=subprocess.DEVNULL, stderr=self.said, **options)

    def wait(self, seconds):
        return self.process.wait(seconds)

    def poll(self):
        return self.process.poll()

    def state(self):
        name = os.path.basename(self.command[0])
        code = self.process.poll()
        if code is None:
            ended = "runs"
        elif code < 0:
            ended = f"was ended by signal {-code} ({signal.strsignal(-code)})"
        else:
            ended = f"ended with {code}"
        return f"{name} (process {self.process.pid}) {ended}; its standard error: {self.last_said() or 'nothing'}"

    def last_said(self, most=4000):
        # Read beside the place at which the program writes, which it shares with us.
        size = os.fstat(self.said.fileno()).st_size
        return os.pread(self.said.fileno(), most, max(0, size - most)).decode(errors="replace").strip()


class Picture:
    """A picture of the screen, three bytes a pixel."""

    def __init__(self, width, height, pixels):
        self.width, self.height, self.pixels = width, height, pixels

    def part(self, x, y, width, height):
        rows = []
        for row in range(max(y, 0), min(y + height, self.height)):
            start = (row * self.width + max(x, 0)) * 3
            rows.append(self.pixels[start:start + min(width, self.width - max(x, 0)) * 3])
        return b"".join(rows)

    def colours(self, *rectangle):
        part = self.part(*rectangle)
        return {part[i:i + 3] for i in range(0, len(part), 3)}


class Display:
    """Use as a context: the display, its window manager and what was started on it end with it."""

    def __init__(self, width=1280, height=800, server_options=()):
        self.size = (width, height)
        self.server_options = server_options
        self.processes = []
        self.programs = []  # those under test that are to run

    def __enter__(self):
        readable, writable = os.pipe()
        server = subprocess.Popen(
            ["Xvfb", "-displayfd", str(writable), "-screen", "0", f"{self.size[0]}x{self.size[1]}x24", "-nolisten", "tcp",
             *self.server_options],
            pass_fds=[writable], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.processes.append(server)
        os.close(writable)
        with os.fdopen(readable) as answer:
            number = answer.readline().strip()
        if not number:
            raise AssertionError("Xvfb did not start")
        self.environment = dict(os.environ, DISPLAY=":" + number, LC_ALL="C.UTF-8", LANGUAGE="", TZ="UTC")
        self.environment.pop("QT_QPA_PLATFORM", None)
        self.environment.pop("WAYLAND_DISPLAY", None)
        try:
            self.start_window_manager()
        except BaseException:
            self.__exit__()
            raise
        open_displays.append(self)
        return self

    def start_window_manager(self):
        """Returns when it is ready: a window that is shown while it starts may stay unseen for ever."""
        with tempfile.TemporaryDirectory() as folder:
            ready = os.path.join(folder, "ready")
            self.start(["openbox", "--startup", f"touch {ready}"])
            wait_until(lambda: os.path.exists(ready), "the window manager")

    def __exit__(self, *unused):
        if self in open_displays:
            open_displays.remove(self)
        for process in reversed(self.processes):
            if process.poll() is None:
                process.terminate()
        for process in reversed(self.processes):
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()

    def start(self, command, environment=None, **options):
        options.setdefault("stdout", subprocess.DEVNULL)
        options.setdefault("stderr", subprocess.DEVNULL)
        process = subprocess.Popen(command, env=environment or self.environment, **options)
        self.processes.append(process)
        return process

    def start_program(self, command, environment=None, **options):
        """A program under test. Until end_program() it is a failure when it ends."""
        program = Program(command, env=environment or self.environment, **options)
        self.processes.append(program.process)
        self.programs.append(program)
        return program

    def end_program(self, program, seconds=20):
        """Waits for a program that was told to end, and answers its exit status."""
        self.programs.remove(program)
        try:
            return program.wait(seconds)
        except subprocess.TimeoutExpired as late:
            raise AssertionError(f"waited {seconds} s in vain for the end: {program.state()}\n{self.state()}") from late

    def require_programs(self, waiting_for):
        for program in self.programs:
            if program.poll() is not None:
                raise AssertionError(f"waiting for {waiting_for}: {program.state()}")

    def state(self):
        """What there is, for who has waited in vain."""
        lines = [program.state() for program in self.programs]
        active = self.tool("getactivewindow")
        for window in self.windows("--name", ""):
            title = self.title(window)
            # Without titles are the window manager's own, but for menus and tooltips of programs.
            if title or window in self.windows("--class", "ovedit"):
                keyboard = " and has the keyboard" if window == active else ""
                lines.append(f"window {window} {title!r} at {self.place(window)}{keyboard}")
        return "\n".join(lines) or "there are no windows"

    def tool(self, *arguments):
        """Runs xdotool and returns what it prints; nothing when it finds nothing."""
        answer = subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, text=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60, check=False)
        return answer.stdout.strip()

    def windows(self, *criteria):
        return self.tool("search", "--onlyvisible", *criteria).split()

    def title(self, window):
        return self.tool("getwindowname", window)

    def place(self, window):
        """Position and size: x, y, width, height."""
        found = dict(line.split("=") for line in self.tool("getwindowgeometry", "--shell", window).splitlines())
        return tuple(int(found[name]) for name in ("X", "Y", "WIDTH", "HEIGHT"))

    def move(self, x, y):
        self.tool("mousemove", x, y)

    def click(self, x, y):
        self.tool("mousemove", x, y, "click", 1)

    def key(self, *keys):
        self.tool("key", "--clearmodifiers", *keys)

    def picture(self, file=None):
        if file is not None:
            subprocess.run(["import", "-window", "root", file], env=self.environment, check=True, timeout=60)
        raw = subprocess.run(["import", "-window", "root", "-depth", "8", "ppm:-"], env=self.environment, check=True,
                             timeout=60, stdout=subprocess.PIPE).stdout
        _, size, _, pixels = raw.split(b"\n", 3)
        width, height = map(int, size.split())
        return Picture(width, height, pixels)

    def settled_picture(self, file=None):
        """The screen when it has stopped changing."""
        before = self.picture()

        def unchanged():
            nonlocal before
            time.sleep(0.2)
            now = self.picture()
            same = now.pixels == before.pixels
            before = now
            return same

        wait_until(unchanged, "the screen to stand still", 20)
        return self.picture(file) if file is not None else before
