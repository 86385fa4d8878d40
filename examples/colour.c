#include "colour.h"

#include <math.h>

#include "chart/colour/CieTables.h"

static double LabFunction(double ratio)
{
    const double delta = 6.0 / 29.0;
    return ratio > delta * delta * delta ? cbrt(ratio) : ratio / (3.0 * delta * delta) + 4.0 / 29.0;
}

Lab LabOfSpectrum(const float* spectrum)
{
    double x = 0.0, y = 0.0, z = 0.0;
    double whiteX = 0.0, whiteY = 0.0, whiteZ = 0.0;
    for (int band = 0; band < CieBands; ++band) {
        const CieRow* weight = &cieTable[CieRowsPerBand * band];
        x += weight->d50 * weight->x * spectrum[band];
        y += weight->d50 * weight->y * spectrum[band];
        z += weight->d50 * weight->z * spectrum[band];
        whiteX += weight->d50 * weight->x;
        whiteY += weight->d50 * weight->y;
        whiteZ += weight->d50 * weight->z;
    }
    const double fx = LabFunction(x / whiteX);
    const double fy = LabFunction(y / whiteY);
    const double fz = LabFunction(z / whiteZ);
    const Lab lab = {116.0 * fy - 16.0, 500.0 * (fx - fy), 200.0 * (fy - fz)};
    return lab;
}

double ColourDifference(Lab first, Lab second)
{
    const double l = first.l - second.l;
    const double a = first.a - second.a;
    const double b = first.b - second.b;
    return sqrt(l * l + a * a + b * b);
}
