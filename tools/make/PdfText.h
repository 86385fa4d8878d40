// Texts as they stand in a PDF file.
#pragma once

#include <string>
#include <string_view>

namespace J4Tool::PdfText {

/// A text of a page in the characters of WinAnsi, which its fonts have, in brackets; what they lack is a question mark.
/// @param text  UTF-8
std::string Shown(std::string_view text);

/// Whether the fonts have all its characters.
bool IsShown(std::string_view text);

/// How wide a text is in bold Helvetica, in heights of the font, at most; the regular font is narrower.
double Width(std::string_view text);

/// The text, or as much of its beginning as is no wider with an ellipsis behind it.
/// @param width  in heights of the font
std::string Fitting(std::string_view text, double width);

/// A text about the file, in all characters, in angles.
/// @param text  UTF-8
std::string About(std::string_view text);

/// A name with its slash, "/Spot#20ink".
std::string Name(std::string_view name);

/// A number of at most four decimals, without an exponent, which PDF does not know.
std::string Number(double value);

}  // namespace J4Tool::PdfText
