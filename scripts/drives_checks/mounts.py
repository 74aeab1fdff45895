"""The drives: how each is made, mounted, disconnected and stopped."""

import contextlib
import fcntl
import os
import signal
import socket
import struct
import subprocess
import time

CAPACITY = 160 << 20
SFTP_SERVER = "/usr/lib/openssh/sftp-server"


def run(*command):
    subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.PIPE)


def wait_until(is_true, seconds, what):
    deadline = time.monotonic() + seconds
    while not is_true():
        if time.monotonic() > deadline:
            raise TimeoutError(what)
        time.sleep(0.02)


class Drive:
    """One drive, mounted at `path`. Its daemon, if it has one, is our child process."""

    can_hang = True
    has_cache = False  # Whether it takes a whole file before it stores the file elsewhere.

    def __init__(self, folder):
        self.path = os.path.join(folder, "drive")
        self.store = os.path.join(folder, "store")
        self.daemon = None
        os.makedirs(self.path)
        os.makedirs(self.store)

    def mount_store(self):
        """Mounts the backing store of a drive that passes data on, small enough to be filled."""
        run("mount", "-t", "tmpfs", "-o", f"size={CAPACITY}", "tmpfs", self.store)

    def start(self, *command, **options):
        self.daemon = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                                       **options)
        wait_until(lambda: os.path.ismount(self.path) or self.daemon.poll() is not None, 20, "mounting")
        if self.daemon.poll() is not None:
            raise OSError(f"{command[0]} ended with status {self.daemon.returncode}")

    def disconnect(self):
        """Disconnects the drive, as if its cable were pulled."""
        self.daemon.kill()
        self.daemon.wait()

    def stop(self):
        self.daemon.send_signal(signal.SIGSTOP)

    def resume(self):
        self.daemon.send_signal(signal.SIGCONT)

    def unmount(self):
        for path in (self.path, self.store):
            subprocess.run(["umount", "-l", path], stderr=subprocess.DEVNULL)
        if self.daemon and self.daemon.poll() is None:
            with contextlib.suppress(subprocess.TimeoutExpired):
                self.daemon.wait(10)
            self.daemon.kill()


class Disk(Drive):
    """A kernel file system in a file, on a loop device."""

    can_hang = False

    def __init__(self, folder, kind, size=CAPACITY, *make_options):
        super().__init__(folder)
        image = os.path.join(folder, "image")
        with open(image, "wb") as file:
            file.truncate(size)
        run("mkfs." + kind, *make_options, image)
        self.device = subprocess.check_output(["losetup", "-f", "--show", image], text=True).strip()
        os.unlink(image)
        self.mount(kind)

    def mount(self, kind):
        run("mount", "-t", kind, self.device, self.path)

    def disconnect(self):
        """Shuts the file system down without writing anything more, as a lost device does."""
        shutdown = 0x8004587D  # _IOR('X', 125, __u32)
        folder = os.open(self.path, os.O_RDONLY)
        try:
            fcntl.ioctl(folder, shutdown, struct.pack("I", 2))
        finally:
            os.close(folder)

    def unmount(self):
        super().unmount()
        subprocess.run(["losetup", "-d", self.device], stderr=subprocess.DEVNULL)


class FuseDisk(Disk):
    """A FUSE file system on a loop device."""

    can_hang = True

    def mount(self, kind):
        if kind == "exfat":
            self.start("mount.exfat-fuse", "-d", self.device, self.path)
        else:
            self.start("ntfs-3g", "-o", "no_detach", self.device, self.path)

    disconnect = Drive.disconnect


class Memory(Drive):
    can_hang = False

    def __init__(self, folder):
        super().__init__(folder)
        run("mount", "-t", "tmpfs", "-o", f"size={CAPACITY}", "tmpfs", self.path)

    disconnect = None


class Overlay(Drive):
    can_hang = False
    disconnect = None

    def __init__(self, folder):
        super().__init__(folder)
        self.mount_store()
        for name in ("lower", "upper", "work"):
            os.makedirs(os.path.join(self.store, name))
        layers = [f"{name}dir={self.store}/{name}" for name in ("lower", "upper", "work")]
        self.mount(",".join(layers))

    def mount(self, layers):
        run("mount", "-t", "overlay", "-o", layers, "overlay", self.path)


class FuseOverlay(Overlay):
    can_hang = True
    disconnect = Drive.disconnect

    def mount(self, layers):
        self.start("fuse-overlayfs", "-f", "-o", layers, self.path)


class PassThroughDrive(Drive):
    """A daemon that passes the contents of the store on."""

    def __init__(self, folder, *command):
        super().__init__(folder)
        self.mount_store()
        self.start(*[part.format(store=self.store, path=self.path) for part in command])


class Cached(PassThroughDrive):
    has_cache = True


class Encrypted(Drive):
    def __init__(self, folder, kind):
        super().__init__(folder)
        self.mount_store()
        if kind == "encfs":
            self.start("encfs", "-f", "--standard", "--extpass=echo secret", self.store, self.path)
        else:
            run("gocryptfs", "-init", "-q", "-extpass", "echo secret", self.store)
            self.start("gocryptfs", "-fg", "-q", "-extpass", "echo secret", self.store, self.path)


class Sshfs(Drive):
    """Talks to the server program directly over a socket, so that no service has to run."""

    def __init__(self, folder):
        super().__init__(folder)
        self.mount_store()
        ours, theirs = socket.socketpair()
        self.server = subprocess.Popen([SFTP_SERVER], stdin=theirs, stdout=theirs, stderr=subprocess.DEVNULL)
        self.start("sshfs", "-f", "-o", "passive", f"server:{self.store}", self.path, stdin=ours)

    def start(self, *command, stdin, **_):
        self.daemon = subprocess.Popen(command, stdin=stdin, stdout=stdin, stderr=subprocess.DEVNULL)
        wait_until(lambda: os.path.ismount(self.path) or self.daemon.poll() is not None, 20, "mounting")

    def unmount(self):
        super().unmount()
        self.server.kill()


def rclone(kind, *options):
    return lambda folder: kind(folder, "rclone", "mount", "{store}", "{path}", "--config", "/dev/null",
                               "--cache-dir", folder + "/cache", *options)


DRIVES = {
    "ext4": lambda folder: Disk(folder, "ext4", CAPACITY, "-q"),
    "xfs": lambda folder: Disk(folder, "xfs", 320 << 20, "-q"),
    "btrfs": lambda folder: Disk(folder, "btrfs", 256 << 20, "-q"),
    "tmpfs": Memory,
    "overlay": Overlay,
    "fuse-overlayfs": FuseOverlay,
    "exfat-fuse": lambda folder: FuseDisk(folder, "exfat"),
    "ntfs-3g": lambda folder: FuseDisk(folder, "ntfs", CAPACITY, "-q", "-F"),
    "sshfs": Sshfs,
    "bindfs": lambda folder: PassThroughDrive(folder, "bindfs", "-f", "{store}", "{path}"),
    "encfs": lambda folder: Encrypted(folder, "encfs"),
    "gocryptfs": lambda folder: Encrypted(folder, "gocryptfs"),
    "rclone": rclone(PassThroughDrive),
    "rclone with a cache": rclone(Cached, "--vfs-cache-mode", "writes", "--vfs-write-back", "1s"),
}
