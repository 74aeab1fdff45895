"""Controls the stand-in DAW as a user would: opens and closes sessions, bounces mixes."""

import os
import shutil
import subprocess
from urllib.parse import quote_from_bytes

from .waiting import wait_for


class StandInDaw:
    def __init__(self, desktop, program, session_file, name="reaper", environment=None):
        """Starts the program under a DAW's name, with a session."""
        title = f"{session_file.stem} - Stand-in DAW"
        self.name = name
        executable = desktop.made_folder("bin") / name
        shutil.copy(program, executable)
        self.answers = desktop.logs / f"{name}-answers.log"
        with open(self.answers, "wb") as answers:
            self.process = desktop.start(
                name, [executable, title, encoded(session_file).decode()],
                stdin=subprocess.PIPE, stdout=answers,
                environment={"QT_LINUX_ACCESSIBILITY_ALWAYS_ON": None} | (environment or {}))
        wait_for("the DAW's window", lambda: desktop.display.window_of(title, self.process.pid))

    def open(self, session_file):
        self._tell("open", session_file)
        self._wait_for_answer("open", session_file)

    def close(self, session_file):
        self._tell("close", session_file)
        self._wait_for_answer("close", session_file)

    def start_bounce(self, path, size=400_000, portions=4, milliseconds=100):
        """Starts a bounce that grows in portions, `milliseconds` apart."""
        self._tell("bounce", path, size, portions, milliseconds)

    def wait_for_bounce(self, path):
        self._wait_for_answer("bounce", path)

    def has_bounced(self, path):
        return self._has_answered("bounce", path)

    def bounce(self, path, **pace):
        self.start_bounce(path, **pace)
        self.wait_for_bounce(path)
        return path

    def quit(self):
        self._tell("quit")
        self.process.wait(timeout=10)

    def _tell(self, command, path=b"", *numbers):
        words = [command.encode(), encoded(path), *(str(number).encode() for number in numbers)]
        self.process.stdin.write(b" ".join(words) + b"\n")
        self.process.stdin.flush()

    def _wait_for_answer(self, command, path):
        wait_for(f"the DAW's answer to {command} {path}",
                 lambda: self._has_answered(command, path), seconds=60)

    def _has_answered(self, command, path):
        answer = command.encode() + b" " + encoded(path)
        return answer in self.answers.read_bytes().splitlines()


def encoded(path):
    return quote_from_bytes(os.fsencode(path), safe="/").encode()
