"""A chart of two rows for the virtual table, and what each of its patches reflects."""
from chart_text import BANDS, chart_text

PAPER = 0.88


def ramp(start, step):
    return [start + step * band for band in range(len(BANDS))]


# Patches of 20 mm side by side, two rows; by name, with place of the middle and reflectance.
CHART = {
    "A1": (210, 250, ramp(0.10, 0.01)),
    "A2": (232, 250, ramp(0.60, -0.01)),
    "A3": (254, 250, ramp(0.30, 0.0)),
    "B1": (210, 300, ramp(0.05, 0.02)),
    "B2": (232, 300, ramp(0.70, -0.015)),
}


def write_chart(path):
    patches = [(name, x, y, 20, 20, spectrum) for name, (x, y, spectrum) in CHART.items()]
    path.write_text(chart_text(patches, f'PAPER_REFLECTANCE "{PAPER}"'))
