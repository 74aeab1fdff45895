"""The checks for every drive. Each returns the text of its table cell, and raises Fault if it fails."""

import contextlib
import hashlib
import os
import random
import re
import subprocess
import time

from mounts import wait_until

MIB = 1 << 20
TIMEOUT = 60  # Seconds after which an operation counts as hung.
OLD = 1_600_000_000
NAMES = [b"que?y.wav", b"co:lon.wav", b'quo"te.wav', b"back\\slash.wav", b"<a|b>*.wav", b"dot..wav.",
         b" blank .wav ", b"new\nline.wav", b"latin\xe4.wav", "ünïcödé 混音 🎚.wav".encode(),
         b"-dash.wav", b"x" * 140 + b".wav", b"x" * 251 + b".wav", "ä".encode() * 125 + b".wav"]


class Fault(Exception):
    pass


def expect(is_true, what):
    if not is_true:
        raise Fault(what)


def digest(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").hexdigest() if hasattr(hashlib, "file_digest") \
            else hashlib.sha256(file.read()).hexdigest()


def write(path, size, date=OLD):
    with open(path, "wb") as file:
        file.write(os.urandom(size))
    os.utime(path, (date, date))
    return digest(path)


def reason(text):
    """The part of our message that gives the reason."""
    found = re.search(r"because (.*)\.\n?$", text, re.DOTALL)
    return found.group(1) if found else text.strip()


class Checks:
    def __init__(self, programs, drive, home):
        self.copy_tool = os.path.join(programs, "stemvault-copy")
        self.watch_tool = os.path.join(programs, "stemvault-eventdump")
        self.drive = drive
        self.home = home
        self.here = os.path.join(drive.path, "here")
        os.makedirs(home, exist_ok=True)
        os.makedirs(self.here)

    def spawn(self, source, to, *options):
        return subprocess.Popen([self.copy_tool, *options, source, to], stderr=subprocess.PIPE)

    def copy(self, source, to, *options):
        """Returns the reason for the failure, or an empty string."""
        process = self.spawn(source, to, *options)
        try:
            text = process.communicate(timeout=TIMEOUT)[1].decode(errors="replace")
        except subprocess.TimeoutExpired:
            process.kill()
            raise Fault("a copy hangs") from None
        return reason(text) if process.returncode else ""

    def leftovers(self, folder=None):
        return [name for name in os.listdir(os.fsencode(folder or self.here)) if name.startswith(b".")]

    def both_ways(self):
        """Copies six files there and back, small and large, one with holes, and makes a replacement."""
        for size in (0, 1, 4097, 3 * MIB + 1, 24 * MIB, -5 * MIB):
            source, there, back = self.home + "/a.wav", self.here + "/a.wav", self.home + "/back.wav"
            write(source, max(size, 0))
            if size < 0:  # Holes, with some data near the end.
                with open(source, "wb") as file:
                    file.truncate(-size)
                    file.seek(-size - 5000)
                    file.write(b"data")
                os.utime(source, (OLD, OLD))
            for one, other in ((source, there), (there, back)):
                why = self.copy(one, other)
                expect(not why, f"{size} bytes: {why}")
                expect(digest(one) == digest(other), f"{size} bytes: the copy differs")
            for path in (there, back):
                os.unlink(path)
        write(self.here + "/a.wav", 3 * MIB)
        new = write(self.home + "/a.wav", 5 * MIB)
        why = self.copy(self.home + "/a.wav", self.here + "/a.wav", "--replace")
        expect(not why and digest(self.here + "/a.wav") == new, f"a replacement: {why}")
        expect(not self.leftovers(), "something was left behind")
        os.unlink(self.here + "/a.wav")
        return "identical"

    def dates(self):
        source, there, back = self.home + "/date.wav", self.here + "/date.wav", self.home + "/dateback.wav"
        write(source, 100_000)
        expect(not self.copy(source, there) and self.has_date(there), "the date was lost on the way there")
        if self.drive.has_cache:  # Until it is stored, such a file has the date at which it was opened.
            stored = there.replace(self.drive.path, self.drive.store)
            wait_until(lambda: os.path.exists(stored) and self.has_date(stored), 20, "storing")
            time.sleep(1)
        expect(not self.copy(there, back) and self.has_date(back), "the date was lost on the way back")
        return "kept"

    @staticmethod
    def has_date(path):
        return abs(os.stat(path).st_mtime - OLD) < 2.1  # FAT counts in steps of two seconds.

    def odd_names(self):
        copied, refusals = 0, set()
        for name in NAMES:
            source, target = (os.path.join(os.fsencode(folder), name) for folder in (self.home, self.here))
            expected = write(source, 5000)
            why = self.copy(source, target)
            if not why:
                listed = os.listdir(os.fsencode(self.here))
                expect(digest(target) == expected and name in listed, f"{name} differs")
                copied += 1
                os.unlink(target)
            else:
                known = {"too long": "too long", "allow its name": "not allowed"}
                refusals.add(next((short for text, short in known.items() if text in why), why))
            expect(not self.leftovers(), f"{name} left something behind")
        if not refusals:
            return f"all {copied}"
        return f"{copied} of {len(NAMES)}, else “{'”, “'.join(sorted(refusals))}”"

    def full_disk(self):
        old = write(self.here + "/Mix.wav", 2 * MIB)
        # Fills the backing store of a drive that has one, as some such drives cache the free space.
        room = self.drive.store if os.path.ismount(self.drive.store) else self.here
        filler = room + "/filler"
        with contextlib.suppress(OSError), open(filler, "wb", buffering=0) as file:
            while os.statvfs(room).f_bavail * os.statvfs(room).f_frsize > 12 * MIB:
                file.write(os.urandom(2 * MIB))
        write(self.home + "/big.wav", 40 * MIB)
        why = self.copy(self.home + "/big.wav", self.here + "/Mix.wav", "--replace")
        if self.drive.has_cache:
            os.unlink(filler)
            expect(not why, why)
            return "reported as copied: it is in the drive's cache on this machine"
        expect(why, "40 MiB went onto a full disk")
        expect(digest(self.here + "/Mix.wav") == old, "the old file was lost")
        expect(not self.leftovers(), "something was left behind")
        for path in (filler, self.here + "/Mix.wav"):
            os.unlink(path)
        return f"“{why}”, the old file stays"

    def kills(self):
        """Copies replacements and new files, and kills each copy at a random moment of its usual duration."""
        source, target = self.home + "/kill.wav", self.here + "/kill.wav"
        versions = {write(source, 12 * MIB)}
        usual = min(self.time_of_copy(source, target) for _ in range(3))
        finished = 0
        for kill in range(40):
            new = kill % 2 == 1
            path = f"{self.here}/new{kill}.wav" if new else target
            versions.add(write(source, 12 * MIB))
            process = self.spawn(source, path, "--replace")
            with contextlib.suppress(subprocess.TimeoutExpired):
                process.wait(random.uniform(0, 1.3 * usual))
            process.kill()
            process.wait()
            if new and not os.path.exists(path):
                continue
            expect(os.path.exists(path), f"kill {kill}: the old file is gone")
            expect(digest(path) in versions, f"kill {kill}: a part of a file")
            finished += new
            if new:
                os.unlink(path)
            for name in self.leftovers():
                os.unlink(os.path.join(os.fsencode(self.here), name))
        os.unlink(target)
        return f"40 times whole or absent ({finished} of 20 new ones came through)"

    def time_of_copy(self, source, target):
        start = time.monotonic()
        expect(not self.copy(source, target, "--replace"), "a copy failed")
        return time.monotonic() - start

    def watching(self):
        """Written files are reported; moved, renamed, played and re-dated ones are not."""
        watched = os.path.join(self.here, "watched")
        os.makedirs(watched)
        for name in ("written again", "renamed", "played", "with another mode", "dated"):
            write(f"{watched}/{name}.wav", 5000)
        for path in (self.here + "/moved in.wav", self.home + "/copied.wav"):
            write(path, 5000)
        reports = os.path.join(self.home, "reports")
        with open(reports, "wb") as output:
            watcher = subprocess.Popen([self.watch_tool, "--written", watched], stdout=output,
                                       stderr=subprocess.PIPE)
        try:
            expect(watcher.stderr.readline() == b"Watches established.\n", "cannot be watched")
            self.disturb(watched)
            start = time.monotonic()
            written = {"written again", "new", "in a new folder"}
            for name in ("written again", "new"):
                write(f"{watched}/{name}.wav", 7000, time.time())
            os.makedirs(watched + "/folder")
            write(watched + "/folder/in a new folder.wav", 7000, time.time())
            wait_until(lambda: written <= self.reported_names(reports), 20,
                       "not every written file was reported")
            took = time.monotonic() - start
            time.sleep(7)  # Two polls, which must not report anything else.
        finally:
            watcher.terminate()
            watcher.wait()
        others = self.reported_names(reports) - written
        expect(others <= {"copied"}, f"reported as written: {', '.join(sorted(others))}")
        # Where renaming without replacing is possible only by a hard link, a copy looks like a new file.
        return f"reported within {took:.1f} s, " + ("and our own copy" if others else "nothing else")

    def disturb(self, watched):
        """Makes all changes that are not recordings."""
        os.rename(watched + "/renamed.wav", watched + "/renamed otherwise.wav")
        os.rename(self.here + "/moved in.wav", watched + "/moved in.wav")
        digest(watched + "/played.wav")
        for change in (lambda: os.chmod(watched + "/with another mode.wav", 0o600),
                       lambda: os.utime(watched + "/dated.wav", (OLD - 1000, OLD - 1000))):
            with contextlib.suppress(OSError):  # Not every drive supports modes.
                change()
        why = self.copy(self.home + "/copied.wav", watched + "/copied.wav")
        expect(not why, f"our own copy: {why}")

    @staticmethod
    def reported_names(reports):
        """The reported audio files; our staged files have other extensions."""
        with open(reports, encoding="utf-8", errors="replace") as lines:
            return set(re.findall(r"([^/\n]*)\.wav$", lines.read(), re.MULTILINE))

    def begin_long_copy(self):
        """Starts a copy onto the drive; returns its process, once it writes, and the digest of the source."""
        size = 60 * MIB
        expected = write(self.home + "/long.wav", size)
        process = self.spawn(self.home + "/long.wav", self.here + "/long.wav")
        time.sleep(0.01)
        return process, expected

    def hanging(self):
        if not self.drive.can_hang:
            return "not tested: it has no daemon to stop"
        process, expected = self.begin_long_copy()
        self.drive.stop()
        time.sleep(2)
        waited = process.poll() is None
        self.drive.resume()
        try:
            text = process.communicate(timeout=TIMEOUT)[1].decode(errors="replace")
        except subprocess.TimeoutExpired:
            process.kill()
            raise Fault("a copy does not end after the drive has resumed") from None
        expect(process.returncode == 0, reason(text))
        expect(digest(self.here + "/long.wav") == expected, "the copy differs")
        os.unlink(self.here + "/long.wav")
        return "waits, then whole" if waited else "was faster than the stop, whole"

    def disconnection(self):
        if not self.drive.disconnect:
            return "not tested: it is in memory"
        process, _ = self.begin_long_copy()
        try:
            self.drive.disconnect()
        except OSError as error:
            process.kill()
            process.wait()
            return f"not tested: it cannot be shut down ({error.strerror})"
        start = time.monotonic()
        try:
            text = process.communicate(timeout=TIMEOUT)[1].decode(errors="replace")
        except subprocess.TimeoutExpired:
            process.kill()
            raise Fault("a copy hangs when the drive is disconnected") from None
        expect(process.returncode != 0, "a copy to a disconnected drive was reported as done")
        return f"“{reason(text)}” after {time.monotonic() - start:.1f} s"
