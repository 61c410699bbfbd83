// What the analysis of one window yields.
#pragma once

namespace dorvek::analysis {

// Statistics of one sample's chosen partial PDF g in one window, with g as the weight of each bin.
// The fields bear the labels of the report. [r] is the unit of the grid; d... is the error of ...
struct WindowStats {
    float CN = 0.0f;  // coordination number, atoms
    float dCN = 0.0f;
    float Rmea = 0.0f;  // mean of r [r]
    float dRmea = 0.0f;
    float Rmod = 0.0f;  // mode: r of the first bin where g is largest [r]
    float var = 0.0f;   // central second moment [r^2]
    float dvar = 0.0f;
    float varl = 0.0f;  // its part from the bins at or below Rmea [r^2]
    float varr = 0.0f;  // its part from the bins at or above Rmea [r^2]
    float sdev = 0.0f;  // square root of var [r]; not reported
    float adif = 0.0f;  // varr - varl [r^2]
    float arat = 0.0f;  // varr / varl
    float pmo3 = 0.0f;  // central third moment [r^3]
    float dpmo3 = 0.0f;
    float skew = 0.0f;  // pmo3 / sdev^3
    float dskew = 0.0f;
    float pmo4 = 0.0f;  // central fourth moment [r^4]
    float dpmo4 = 0.0f;
    float kurt = 0.0f;  // excess kurtosis, pmo4 / sdev^4 - 3
    float dkurt = 0.0f;
    float cum4 = 0.0f;  // fourth cumulant, pmo4 - 3 var^2 [r^4]
    float dcum4 = 0.0f;
};

}  // namespace dorvek::analysis
