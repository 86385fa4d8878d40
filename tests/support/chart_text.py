"""Charts for the virtual table, as the text of a CGATS file."""
BANDS = range(380, 731, 10)


def chart_text(patches, *keywords):
    """@param patches  of each its name, x and y of its middle, width and height in mm, and its reflectance in all bands
    @param keywords  lines for the head of the file"""
    fields = ["SAMPLE_NAME", "X", "Y", "WIDTH", "HEIGHT"] + [f"SPECTRAL_NM{band}" for band in BANDS]
    rows = [" ".join([*map(str, place), *(f"{value:.4g}" for value in spectrum)]) for *place, spectrum in patches]
    return "\n".join(["CGATS.17", *keywords, "BEGIN_DATA_FORMAT", " ".join(fields), "END_DATA_FORMAT", "BEGIN_DATA", *rows,
                      "END_DATA", ""])
