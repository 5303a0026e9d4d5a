"""The examples for CI servers, each line of theirs run in a folder like a runner's.

With WICKFIELD_WHOLE_BUILD in the environment they check out and build the whole of Wickfield, which takes long; without it
stand-ins take the place of apt-get and of all of CMake but the installation.
"""
import json
import os
import pathlib
import re
import shutil
import subprocess

import stand_ins
from support import BundleCase
from test_installed import BUILD, TEMPLATE

try:
    import yaml
except ImportError:
    yaml = None

ROOT = pathlib.Path(__file__).resolve().parents[2]
REVISION = "v1"
PROJECT = {"name": "Pebble", "version": "1", "author": "Tidewater Audio",
           "items": [{"source": "build/Pebble.clap", "destination": "/Users/user/.clap/"}]}
WHOLE_BUILD = "WICKFIELD_WHOLE_BUILD" in os.environ


class Runner(BundleCase):
    def setUp(self):
        super().setUp()
        for missing in [name for name in ("git", "cmake") if shutil.which(name) is None]:
            self.skipTest(f"there is no {missing} on this machine")
        if yaml is None:
            self.skipTest("python3-yaml is not on this machine")
        if not TEMPLATE.is_dir():
            self.skipTest("the installer's template was not built")
        stand_ins.make(self.folder / "bin", BUILD, ("apt-get",) if WHOLE_BUILD else stand_ins.COMMANDS)
        self.environment = {"HOME": str(self.home), "PATH": f"{self.folder}/bin:/usr/local/bin:/usr/bin:/bin",
                            "GIT_AUTHOR_NAME": "Nobody", "GIT_AUTHOR_EMAIL": "nobody@example.com",
                            "GIT_COMMITTER_NAME": "Nobody", "GIT_COMMITTER_EMAIL": "nobody@example.com",
                            "GIT_COMMITTER_DATE": "2026-11-21T12:00:00Z", "GIT_AUTHOR_DATE": "2026-11-21T12:00:00Z"}
        self.wickfield = self.make_wickfield_repository()

    def git(self, folder, *words):
        subprocess.run(["git", *words], cwd=folder, env=self.environment, check=True, timeout=100,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def commit(self, folder):
        self.git(folder, "init")
        self.git(folder, "add", ".")
        self.git(folder, "commit", "-m", "All of it")
        self.git(folder, "tag", REVISION)

    def make_wickfield_repository(self):
        """What the examples use of it, or all of it."""
        folder = self.folder / "wickfield"
        if WHOLE_BUILD:
            shutil.copytree(ROOT, folder, symlinks=True, ignore=shutil.ignore_patterns("build*", ".git"))
        else:
            (folder / "scripts").mkdir(parents=True)
            for name in ("CMakeLists.txt", "CMakePresets.json", "scripts/packages.sh", "scripts/common.sh"):
                shutil.copy(ROOT / name, folder / name)
        self.commit(folder)
        return folder

    def make_plugin_repository(self, name, project=None):
        folder = self.work / name
        folder.mkdir()
        (folder / "wickfield.json").write_text(json.dumps(project or PROJECT))
        build = folder / "build.sh"
        build.write_text("#!/bin/sh\nmkdir build && echo code > build/Pebble.clap && chmod 755 build/Pebble.clap\n")
        build.chmod(0o755)
        self.commit(folder)
        return folder

    def run_script(self, text, folder, variables):
        run = subprocess.run(["bash", "--noprofile", "--norc", "-eo", "pipefail", "-c", text], cwd=folder, check=False,
                             env={**self.environment, **variables}, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                             stderr=subprocess.STDOUT, timeout=6000 if WHOLE_BUILD else 100)
        return run.returncode, run.stdout.decode(errors="replace")


class GitHub:
    """One job of a workflow, run in a plug-in's checkout."""

    def __init__(self, case, workspace, job):
        self.case, self.workspace, self.job = case, workspace, job
        self.path_file, self.environment_file = (workspace.parent / f"{workspace.name}.{kind}" for kind in ("path", "env"))
        self.failed = False
        self.kept = {}
        self.output = ""
        self.done = []

    def run(self):
        for file in (self.path_file, self.environment_file):
            file.touch()
        for step in self.job["steps"]:
            if self.is_wanted(step.get("if")):
                self.done.append(step["name"])
                if "uses" in step:
                    self.use(step["uses"], step.get("with", {}))
                else:
                    self.run_step(step)
        return self

    def is_wanted(self, condition):
        cached = (self.workspace / "wickfield-prefix").exists()
        return {None: not self.failed, "always()": True,
                "steps.tool.outputs.cache-hit != 'true'": not self.failed and not cached}[condition]

    def run_step(self, step):
        variables = dict(line.split("=", 1) for line in self.environment_file.read_text().splitlines())
        for line in self.path_file.read_text().splitlines():
            variables["PATH"] = f"{line}:{variables.get('PATH', self.case.environment['PATH'])}"
        variables.update({"GITHUB_WORKSPACE": str(self.workspace), "GITHUB_PATH": str(self.path_file),
                          "GITHUB_ENV": str(self.environment_file)})
        code, output = self.case.run_script(step["run"], self.workspace / step.get("working-directory", "."), variables)
        self.output += f"== {step['name']}\n{output}"
        self.failed = self.failed or code != 0

    def use(self, action, options):
        name = action.split("@")[0]
        if name == "actions/checkout" and options:
            self.case.assertEqual(options["repository"], "${{ vars.WICKFIELD_REPOSITORY }}")
            self.case.git(self.workspace, "clone", self.case.wickfield, options["path"])
        elif name == "actions/upload-artifact":
            self.kept[options["name"]] = [path.name for path in self.workspace.glob(options["path"])]
        else:
            self.case.assertIn(name, ("actions/checkout", "actions/cache"))


class GitHubActions(Runner):
    def job(self, workspace):
        text = (ROOT / "docs" / "ci" / "github-actions.yml").read_text()
        workflow = yaml.safe_load(text)
        self.assertEqual(set(re.findall(r"\$\{\{ (.*?) \}\}", text)),
                         {"vars.WICKFIELD_REPOSITORY", "vars.WICKFIELD_REVISION"})
        self.assertEqual(workflow["jobs"]["installer"]["defaults"], {"run": {"shell": "bash"}})
        return GitHub(self, workspace, workflow["jobs"]["installer"]).run()

    def test_it_makes_checks_and_keeps_an_installer(self):
        workspace = self.make_plugin_repository("plugin")
        job = self.job(workspace)
        self.assertFalse(job.failed, job.output)
        self.assertEqual(job.kept, {"findings": ["findings.json"], "installer": ["Pebble Installer.zip"]})
        self.assertEqual(json.loads((workspace / "installers" / "findings.json").read_text())["errors"], 0)
        self.assertIn("Pebble.clap", job.output.split("== Show what it installs\n")[1])

    def test_a_mistake_fails_the_job_and_its_findings_are_kept(self):
        job = self.job(self.make_plugin_repository("plugin", with_mistake()))
        self.assertTrue(job.failed)
        self.assertIn("error placeholder-case", job.output)
        self.assertEqual(job.kept, {"findings": ["findings.json"]})

    def test_the_tool_is_built_once(self):
        first = self.make_plugin_repository("first")
        self.assertIn("Build it", self.job(first).done)
        second = self.make_plugin_repository("second")
        shutil.copytree(first / "wickfield-prefix", second / "wickfield-prefix")
        job = self.job(second)
        self.assertFalse(job.failed, job.output)
        self.assertNotIn("Build it", job.done)

    def test_two_checkouts_of_one_commit_give_the_same_archive(self):
        archives = []
        for name in ("first", "second"):
            workspace = self.make_plugin_repository(name)
            self.assertFalse(self.job(workspace).failed)
            archives.append((workspace / "installers" / "Pebble Installer.zip").read_bytes())
        self.assertEqual(*archives)


class GitLab(Runner):
    def run_job(self, project):
        job = yaml.safe_load((ROOT / "docs" / "ci" / "gitlab-ci.yml").read_text())["installer"]
        variables = {"CI_PROJECT_DIR": str(project), "WICKFIELD_REPOSITORY": str(self.wickfield),
                     "WICKFIELD_REVISION": REVISION}
        for name, value in job["variables"].items():
            variables[name] = value.replace("$CI_PROJECT_DIR", str(project))
        code, output = self.run_script("\n".join([*job["before_script"], *job["script"]]), project, variables)
        kept = [path.name for pattern in job["artifacts"]["paths"] for path in project.glob(pattern)]
        self.assertEqual(job["artifacts"]["when"], "always")
        for path in job["cache"]["paths"]:
            self.assertTrue(code != 0 or (project / path).is_dir())
        return code, output, kept

    def test_it_makes_checks_and_keeps_an_installer(self):
        project = self.make_plugin_repository("plugin")
        code, output, kept = self.run_job(project)
        self.assertEqual(code, 0, output)
        self.assertEqual(kept, ["findings.json", "Pebble Installer.zip"])
        self.assertEqual(json.loads((project / "installers" / "findings.json").read_text())["errors"], 0)

    def test_a_mistake_fails_the_job_and_its_findings_are_kept(self):
        code, output, kept = self.run_job(self.make_plugin_repository("plugin", with_mistake()))
        self.assertEqual(code, 1, output)
        self.assertIn("error placeholder-case", output)
        self.assertIn("findings.json", kept)

    def test_the_tool_is_built_once(self):
        first = self.make_plugin_repository("first")
        self.assertEqual(self.run_job(first)[0], 0)
        second = self.make_plugin_repository("second")
        shutil.copytree(first / "wickfield-prefix", second / "wickfield-prefix")
        (self.folder / "bin" / "cmake").write_text("#!/bin/sh\nexit 1\n")
        code, output, _ = self.run_job(second)
        self.assertEqual(code, 0, output)


def with_mistake():
    return {**PROJECT, "items": [{"source": "build/Pebble.clap", "destination": "/Users/User/.clap/"}]}
