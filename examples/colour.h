/* The colour mathematics of the report: from a reflectance spectrum to CIELab, and the difference of two. */
#ifndef COLOUR_H
#define COLOUR_H

typedef struct Lab {
    double l;
    double a;
    double b;
} Lab;

/** L*, a*, b* of 36 reflectance factors (380 to 730 nm in steps of 10 nm), CIE 1931 2 degree observer, D50. */
Lab LabOfSpectrum(const float* spectrum);

/** The colour difference of CIE 1976. */
double ColourDifference(Lab first, Lab second);

#endif
