"""What the tests of the Python package need: a chart, and the package as its user has it.

The package is the one that Python finds; REAL_LIBRARY names the variant for real tables that belongs to it.
"""
import sys
from pathlib import Path

import pytest

sys.path.append(str(Path(__file__).parent.parent / "support"))
from printed_rows import write_chart


@pytest.fixture
def chart(tmp_path):
    path = tmp_path / "chart.cgats"
    write_chart(path)
    return path
