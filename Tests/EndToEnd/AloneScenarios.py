"""The isolation of a scenario from the machine that it runs on."""

import os
import socket
import unittest
from pathlib import Path

from Scenario import Scenario


class AloneScenarios(Scenario):
    def test_of_this_machine_no_process_and_no_service_is_seen(self):
        if not self.desktop.lives_alone():
            self.skipTest("the kernel allows no process namespace here")
        self.start(always_watch=self.folder("Bounces"))
        self.assertIn("alone.py", Path("/proc/1/cmdline").read_text())
        self.assertIn(str(self.connect.process.pid), os.listdir("/proc"))
        self.assertEqual([name for _, name in socket.if_nameindex()], ["lo"])
        environment = Path(f"/proc/{self.connect.process.pid}/environ").read_text().split("\0")
        folders = [Path(line.split("=", 1)[1].split(":")[0]) for line in environment
                   if line.startswith(("HOME=", "XDG_"))]
        self.assertEqual([folder for folder in folders if self.desktop.folder not in folder.parents], [])
        applications = [Path(f"/proc/{self.connect.process.pid}/root{folder}/applications")
                        for folder in folders]
        self.assertFalse(any(folder.exists() for folder in applications))
        status = Path(f"/proc/{self.connect.process.pid}/status").read_text()
        self.assertEqual("CapEff:\t0000000000000000" in status, os.geteuid() != 0)


if __name__ == "__main__":
    unittest.main()
