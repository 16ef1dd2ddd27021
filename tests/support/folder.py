"""A folder for what the tests of a class leave, removed with them."""
import tempfile
import unittest
from pathlib import Path


class InFolder(unittest.TestCase):
    folder: Path

    @classmethod
    def setUpClass(cls) -> None:
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
