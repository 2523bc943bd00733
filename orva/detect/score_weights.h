// The weights of the scores, fitted to annotated images by scripts/detect_weights.
#ifndef ORVA_DETECT_SCORE_WEIGHTS_H
#define ORVA_DETECT_SCORE_WEIGHTS_H

#include <array>

namespace orva::detect {

// A term takes part in a logit as (term - mean) / deviation, held in -3.5 .. 3.5, times its weight.
struct TermWeight {
  double mean;
  double deviation;
  double weight;
};

// Of the measures alone.
inline constexpr double kAloneBias = -7.3613502;
inline constexpr std::array<TermWeight, 26> kAloneWeights{{
    {0.84375, 0.0994318182, 0.310620564},       // kCoverage
    {2.64213312, 1.12514931, 0.727328233},      // kEdgeToNoise
    {0.791673273, 0.231968063, 0.048965315},    // kEdgeShare
    {0.547410667, 0.286523857, 0.5886253},      // kEvenness
    {0.237489708, 0.5482683, 0.492030245},      // kWeakEdges
    {0.5625, 0.255681818, 0.422697303},         // kSlope
    {0.4375, 0.198863636, 0.047001278},         // kRoughness
    {0.0587362628, 0.432484968, -0.109203418},  // kAscent
    {0.707265407, 0.190144077, 0.822308005},    // kAlignment
    {0.752522767, 0.119188622, -0.330619879},   // kAxisRatio
    {0.95548439, 0.0275034306, 0.577772888},    // kSolidity
    {0.8330791, 0.0653740577, 0.88711276},      // kRoundness
    {1.50629067, 0.457192031, 0.770091146},     // kLogLevelRadius
    {1, 0.0994318182, -0.283049455},            // kVisible
    {0.577621311, 0.167811534, 0.0871319904},   // kContrastToSpread
    {2.24768519, 1.27240256, 0.847306679},      // kContrastToNoise
    {0.196802326, 0.314839204, 0.277280884},    // kOuterQuartile
    {0.6875, 0.184659091, 0.885903592},         // kSeparateRays
    {0.21875, 0.15625, -0.14531358},            // kStrongerElsewhere
    {1.22770876, 0.502617424, 0.422463517},     // kSharpness
    {0.360200584, 0.827175377, 0.0103455489},   // kEdgeToMean
    {0.106109813, 0.210185577, -0.125486347},   // kOffCenter
    {1.13238508, 1.07132311, -0.377675999},     // kOuterSpread
    {0.692861706, 0.461462871, 0.0434684771},   // kPathValue
    {0.09375, 0.113636364, 0.000760363615},     // kLongestGap
    {0.642995507, 0.223310187, 0.211286261},    // kDirectionSpread
}};

// Of the measures, the first logit and the differences to the context.
inline constexpr double kInContextBias = -5.95723405;
inline constexpr std::array<TermWeight, 33> kInContextWeights{{
    {0.84375, 0.0994318182, 0.293331306},        // kCoverage
    {2.64213312, 1.12514931, 0.659443349},       // kEdgeToNoise
    {0.791673273, 0.231968063, -0.0527594475},   // kEdgeShare
    {0.547410667, 0.286523857, 0.566892547},     // kEvenness
    {0.237489708, 0.5482683, 0.398490773},       // kWeakEdges
    {0.5625, 0.255681818, 0.302363707},          // kSlope
    {0.4375, 0.198863636, -0.0152209886},        // kRoughness
    {0.0587362628, 0.432484968, -0.148249228},   // kAscent
    {0.707265407, 0.190144077, 0.823649551},     // kAlignment
    {0.752522767, 0.119188622, -0.305041199},    // kAxisRatio
    {0.95548439, 0.0275034306, 0.507057476},     // kSolidity
    {0.8330791, 0.0653740577, 0.720659233},      // kRoundness
    {1.50629067, 0.457192031, 0.46630057},       // kLogLevelRadius
    {1, 0.0994318182, -0.261143343},             // kVisible
    {0.577621311, 0.167811534, 0.0725489967},    // kContrastToSpread
    {2.24768519, 1.27240256, 0.740497956},       // kContrastToNoise
    {0.196802326, 0.314839204, 0.187945596},     // kOuterQuartile
    {0.6875, 0.184659091, 0.771943981},          // kSeparateRays
    {0.21875, 0.15625, -0.0520110907},           // kStrongerElsewhere
    {1.22770876, 0.502617424, 0.470159445},      // kSharpness
    {0.360200584, 0.827175377, 0.172361184},     // kEdgeToMean
    {0.106109813, 0.210185577, -0.0909344585},   // kOffCenter
    {1.13238508, 1.07132311, -0.214518088},      // kOuterSpread
    {0.692861706, 0.461462871, 0.042666604},     // kPathValue
    {0.09375, 0.113636364, 0.0602008847},        // kLongestGap
    {0.642995507, 0.223310187, 0.262321643},     // kDirectionSpread
    {-8.48572695, 5.33776233, 0.510011929},      // first logit
    {0, 1.08639405, 0.396435796},                // log radius
    {0.0925192598, 1.04648041, -1.33299738},     // its magnitude
    {-0.0714985098, 1.62415566, -0.0501817186},  // log contrast
    {-0.0563136254, 1.46011184, 0.028026738},    // log edge
    {0, 0.635513006, -0.37639584},               // inside
    {0, 0.566447755, 0.27894466},                // outside
}};

}  // namespace orva::detect

#endif
