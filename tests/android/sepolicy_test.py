"""Compiles android/sepolicy against base_policy.te, and tries own faults in it."""
import re
import subprocess
import tempfile
import unittest
from pathlib import Path

SOURCE = Path(__file__).resolve().parents[2]
POLICY = SOURCE / "android/sepolicy"
BASE = Path(__file__).with_name("base_policy.te").read_text()
# What the library needs, in the application's domain; see docs/boot.md.
NEEDED = ("untrusted_app sysfs_gpu_vesko:file { open read getattr }",
          "untrusted_app vkd_data_file:dir search",
          "untrusted_app vkd_data_file:file { open read getattr }",
          "untrusted_app vendor_vkd_prop:file { open read getattr map }",
          "platform_app vendor_vkd_prop:file { open read getattr map }",
          "untrusted_app orvane_pelune_service:service_manager find",
          "untrusted_app system_server:binder call",
          "vendor_init vendor_vkd_prop:property_service set")
# What a careless addition would bring, and what the compiler says to it.
FAULTS = {"allow untrusted_app_all sysfs_gpu_vesko:file { write open };": "neverallow",
          "allow untrusted_app vkd_data_file:file write;": "neverallow",
          "allow hal_vendor vkd_data_file:dir open;": "neverallow",
          "allow platform_app orvane_pelune_service:service_manager add;": "neverallow",
          "set_prop(system_server, vendor_vkd_prop)": "neverallow",
          "set_prop(hal_vendor, vendor_vkd_prop)": "neverallow",
          "allow untrusted_app vendor_vkd_prop:file r_file_perms;": "neverallow",
          "allow untrusted_app vkd_file:file read;": "unknown type vkd_file",
          "genfscon sysfs /x u:object_r:vkd_file:s0": "vkd_file"}


def rules(name: str) -> list[str]:
    """The lines of all files of this name or pattern, without comments."""
    lines = [line.split("#")[0].rstrip() for path in sorted(POLICY.rglob(name))
             for line in path.read_text().splitlines()]
    return [line for line in lines if line]


def compiled(more_rules: str = "", more_contexts: str = "") -> tuple[int, str]:
    """The compiler's exit code and words."""
    te = "\n".join(rules("*.te") + [more_rules])
    # The labels of the other files have no place in a policy: a made-up path makes
    # the compiler look at them all the same.
    labels = [label for kind in ("file", "service", "property")
              for line in rules(f"{kind}_contexts")
              for label in re.findall(r"u:object_r:\S+", line)]
    tail = "\n".join(rules("genfs_contexts") + [more_contexts] + [
        f"genfscon proc /{i} {label}" for i, label in enumerate(labels)])
    with tempfile.TemporaryDirectory() as directory:
        text = subprocess.run(["m4", "--fatal-warnings", "-"], check=True, text=True,
                              input=BASE.replace("POLICY\n", te + "\n") + tail + "\n",
                              capture_output=True).stdout
        policy = Path(directory, "policy.conf")
        policy.write_text(text)
        done = subprocess.run(["checkpolicy", "-M", "-o", Path(directory, "policy"), policy],
                              text=True, capture_output=True, check=False)
        return done.returncode, done.stdout + done.stderr


class Policy(unittest.TestCase):
    def test_it_compiles_and_grants_what_the_library_needs(self) -> None:
        code, words = compiled()
        self.assertEqual(code, 0, words)
        for access in NEEDED:  # forbidding what is granted is an error
            code, words = compiled(f"neverallow {access};")
            self.assertNotEqual(code, 0, f"not granted: {access}")
            self.assertIn("neverallow", words)

    def test_careless_additions_do_not_compile(self) -> None:
        for fault, complaint in FAULTS.items():
            where = "more_contexts" if fault.startswith("genfscon") else "more_rules"
            code, words = compiled(**{where: fault})
            self.assertNotEqual(code, 0, fault)
            self.assertIn(complaint, words)

    def test_labels_are_for_what_the_library_reads(self) -> None:
        code = "\n".join(path.read_text() for folder in ("hook", "platform", "GameImpl")
                         for path in (SOURCE / folder).rglob("*.[ch]*"))
        constants = set(re.findall(r'"((?:/|vendor\.|orvane)[^"%\s]+)"', code))
        paths = [line.split()[0] for line in rules("file_contexts")]
        properties = rules("property_contexts")
        names = {line.split()[0] for line in properties + rules("service_contexts")}
        prefixes = tuple(line.split()[0] + "." for line in properties if " exact " not in line)
        node = rules("genfs_contexts")[0].split()[2]
        for constant in constants - {"/proc/self/cmdline"}:
            known = (constant in names
                     or constant.startswith(prefixes)
                     or any(re.fullmatch(path, constant) for path in paths)
                     or constant == f"/sys/class/{'/'.join(node.split('/')[3:])}")
            self.assertTrue(known, f"{constant} has no label")
        self.assertLessEqual(names, constants)


if __name__ == "__main__":
    unittest.main()
