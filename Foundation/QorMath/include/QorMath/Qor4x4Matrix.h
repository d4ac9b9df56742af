/// @file
/// A 4x4 float matrix stored row-major: m[row * 4 + column]. Vectors are columns,
/// so a point p is transformed as M * p, and the translation sits in the last column.
#pragma once

#include <cmath>

struct Qor4x4Matrix
{
    float m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};

    const float* Data() const { return m; }
    float& At(int row, int column) { return m[row * 4 + column]; }
    float At(int row, int column) const { return m[row * 4 + column]; }

    static Qor4x4Matrix Identity() { return Qor4x4Matrix(); }

    friend Qor4x4Matrix operator*(const Qor4x4Matrix& a, const Qor4x4Matrix& b)
    {
        Qor4x4Matrix r;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column) {
                float sum = 0;
                for (int k = 0; k < 4; ++k)
                    sum += a.At(row, k) * b.At(k, column);
                r.At(row, column) = sum;
            }
        return r;
    }

    Qor4x4Matrix Transposed() const
    {
        Qor4x4Matrix r;
        for (int row = 0; row < 4; ++row)
            for (int column = 0; column < 4; ++column)
                r.At(row, column) = At(column, row);
        return r;
    }
};
