"""The programs in docs/python.md print what stands there, and satisfy the strictest check of types."""
import re
import subprocess
import sys
from pathlib import Path

PAGE = Path(__file__).parents[2] / "docs/python.md"


def run(*command, folder):
    result = subprocess.run([sys.executable, *command], cwd=folder, capture_output=True, text=True, timeout=120)
    assert result.returncode == 0, result.stdout + result.stderr
    return result.stdout


def test_programs_print_what_stands_below_them(tmp_path):
    page = PAGE.read_text(encoding="utf-8")
    programs = re.findall(r"^```python\n(.*?)^```\n(?:\n(?:It prints:\n\n)?```text\n(.*?)^```)?", page, flags=re.M | re.S)
    names = [f"program_{number}.py" for number in range(len(programs))]
    said = 0
    for name, (program, output) in zip(names, programs):
        (tmp_path / name).write_text(program, encoding="utf-8")
        is_test = "import pytest" in program
        printed = run(*(["-m", "pytest", "-q"] if is_test else []), name, folder=tmp_path)
        assert "2 passed" in printed if is_test else printed == output
        said += bool(output)
    assert said == page.count("```text\n") > 0
    run("-m", "mypy", "--strict", *names, folder=tmp_path)
