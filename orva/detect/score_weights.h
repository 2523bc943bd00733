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
inline constexpr double kAloneBias = -7.13499642;
inline constexpr std::array<TermWeight, 26> kAloneWeights{{
    {0.875, 0.113636364, 0.09494388},            // Coverage
    {2.55651617, 1.13673961, 0.619652679},       // EdgeToNoise
    {0.792300999, 0.224410952, 0.283380086},     // EdgeShare
    {0.59368962, 0.251688679, 0.311506405},      // Evenness
    {0.292396039, 0.393730807, 0.426090934},     // WeakEdges
    {0.5, 0.284090909, 0.402105995},             // Slope
    {0.375, 0.198863636, 0.0459096596},          // Roughness
    {0.0413999036, 0.179953494, -0.0803022515},  // Ascent
    {0.744363725, 0.179385628, 0.873537932},     // Alignment
    {0.760271728, 0.112439057, -0.397176575},    // AxisRatio
    {0.957086802, 0.026156652, 0.514751907},     // Solidity
    {0.840419054, 0.0565182307, 0.687075309},    // Roundness
    {1.39020813, 0.509122474, 1.0750295},        // LogLevelRadius
    {1, 0.0710227273, -0.266056226},             // Visible
    {0.595185578, 0.134339088, 0.575012938},     // ContrastToSpread
    {2.15151238, 1.19906076, 0.747528421},       // ContrastToNoise
    {0.229917437, 0.285438316, 0.524285711},     // OuterQuartile
    {0.70588237, 0.193014714, 0.706106929},      // SeparateRays
    {0.21875, 0.15625, -0.102493261},            // StrongerElsewhere
    {1.22384214, 0.495364514, 0.188261534},      // Sharpness
    {0.360016704, 0.843511705, -0.00225048244},  // EdgeToMean
    {0.108922608, 0.20979219, -0.378793351},     // OffCenter
    {1.07447922, 0.866641329, -0.227476907},     // OuterSpread
    {0.727272153, 0.17871829, -0.0590088171},    // PathValue
    {0.09375, 0.113636364, -0.174088971},        // LongestGap
    {0.623175144, 0.17014399, 0.130279937},      // DirectionSpread
}};

// Of the measures, the first logit and the differences to the context.
inline constexpr double kInContextBias = -5.75996081;
inline constexpr std::array<TermWeight, 33> kInContextWeights{{
    {0.875, 0.113636364, 0.103079973},          // Coverage
    {2.55651617, 1.13673961, 0.515424868},      // EdgeToNoise
    {0.792300999, 0.224410952, 0.127632858},    // EdgeShare
    {0.59368962, 0.251688679, 0.263848962},     // Evenness
    {0.292396039, 0.393730807, 0.307303004},    // WeakEdges
    {0.5, 0.284090909, 0.302728748},            // Slope
    {0.375, 0.198863636, -0.0259207457},        // Roughness
    {0.0413999036, 0.179953494, -0.169466497},  // Ascent
    {0.744363725, 0.179385628, 0.881841263},    // Alignment
    {0.760271728, 0.112439057, -0.338454941},   // AxisRatio
    {0.957086802, 0.026156652, 0.4374764},      // Solidity
    {0.840419054, 0.0565182307, 0.519334493},   // Roundness
    {1.39020813, 0.509122474, 0.66159043},      // LogLevelRadius
    {1, 0.0710227273, -0.212057079},            // Visible
    {0.595185578, 0.134339088, 0.470619492},    // ContrastToSpread
    {2.15151238, 1.19906076, 0.59413297},       // ContrastToNoise
    {0.229917437, 0.285438316, 0.426095518},    // OuterQuartile
    {0.70588237, 0.193014714, 0.626944905},     // SeparateRays
    {0.21875, 0.15625, -0.0554076713},          // StrongerElsewhere
    {1.22384214, 0.495364514, 0.237059012},     // Sharpness
    {0.360016704, 0.843511705, 0.219791863},    // EdgeToMean
    {0.108922608, 0.20979219, -0.285465119},    // OffCenter
    {1.07447922, 0.866641329, -0.0819786085},   // OuterSpread
    {0.727272153, 0.17871829, -0.157647329},    // PathValue
    {0.09375, 0.113636364, -0.140812719},       // LongestGap
    {0.623175144, 0.17014399, 0.158478597},     // DirectionSpread
    {-8.26118169, 5.37173592, 0.695532469},     // first logit
    {-0.0256837304, 1.10786362, 0.493974661},   // log radius
    {0.197786449, 1.03252682, -1.29303674},     // its magnitude
    {-0.220744514, 1.55804443, -0.0261670589},  // log contrast
    {-0.209847977, 1.39404043, 0.103269652},    // log edge
    {0, 0.674892568, -0.442330717},             // inside
    {0, 0.583867414, 0.439623989},              // outside
}};

// The same where the radius is told.
inline constexpr double kToldBias = -4.52495268;
inline constexpr std::array<TermWeight, 33> kToldWeights{{
    {0.84375, 0.0994318182, 0.157446872},       // Coverage
    {2.67807341, 1.1334961, 0.596580252},       // EdgeToNoise
    {0.804194868, 0.205193985, 0.0131754139},   // EdgeShare
    {0.575493813, 0.229162844, 0.295964149},    // Evenness
    {0.282110929, 0.290034232, 0.188595755},    // WeakEdges
    {0.625, 0.255681818, 0.284355256},          // Slope
    {0.5, 0.170454545, -0.13133811},            // Roughness
    {0.0909467041, 0.174889185, -0.252157415},  // Ascent
    {0.734664977, 0.162728599, 1.07942469},     // Alignment
    {0.743467331, 0.108905257, -0.288111607},   // AxisRatio
    {0.949310541, 0.0260761803, 0.350894509},   // Solidity
    {0.818651617, 0.054032588, 0.427829957},    // Roundness
    {1.76679111, 0.524940864, 0.37377977},      // LogLevelRadius
    {1, 0.0710227273, -0.196848325},            // Visible
    {0.610731781, 0.150503488, 0.63175521},     // ContrastToSpread
    {2.44079852, 1.32086174, 0.543595005},      // ContrastToNoise
    {0.171195, 0.320412129, 0.283355317},       // OuterQuartile
    {0.6875, 0.198863636, 1.05417409},          // SeparateRays
    {0.1875, 0.15625, -0.0651833182},           // StrongerElsewhere
    {1.39019191, 0.482833617, 0.27970763},      // Sharpness
    {0.443471909, 0.786288322, 0.212651648},    // EdgeToMean
    {0.112037204, 0.222392942, -0.307968989},   // OffCenter
    {1.14219809, 0.820953898, 0.0960296167},    // OuterSpread
    {0.688464642, 0.172327862, -0.247975201},   // PathValue
    {0.09375, 0.0994318182, -0.127511543},      // LongestGap
    {0.633886993, 0.174642485, 0.193372829},    // DirectionSpread
    {-7.80796519, 5.40200424, 0.635580568},     // first logit
    {0, 0.388233394, 0.123543271},              // log radius
    {0, 0.389710501, -0.849678348},             // its magnitude
    {0, 1.57621867, -0.0585296155},             // log contrast
    {0, 1.39375279, -0.0882224418},             // log edge
    {0, 0.584208091, -0.67034702},              // inside
    {0, 0.417490674, 0.629149386},              // outside
}};

}  // namespace orva::detect

#endif
