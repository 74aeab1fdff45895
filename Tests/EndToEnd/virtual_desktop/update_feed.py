"""An update feed without a network: a copy of the program next to a stand-in for its fetcher."""

import json
import shutil


class UpdateFeed:
    def __init__(self, desktop, program):
        folder = desktop.made_folder("programs/bin")
        self.page = folder.parent / "feed.html"
        self.program = shutil.copy2(program, folder)
        for resources in ("Resources", "share"):  # In a build, or in an installation.
            if (program.parents[1] / resources).exists():
                (folder.parent / resources).symlink_to((program.parents[1] / resources).resolve())
        fetcher = folder / "fetcher"
        fetcher.write_text(f'#!/bin/sh\nexec cat "{self.page}"\n')
        fetcher.chmod(0o755)

    def publish(self, version, **more):
        entry = {"latest_version": version, "download_url": "https://www.stemvault.example/get"}
        text = json.dumps({"stemvault_connect": entry | more})
        self.page.write_text(f"<html><body><pre>{text}</pre></body></html>")

    def withdraw(self):
        """Makes the fetch fail, as without a network."""
        self.page.unlink()
