// The weights of the scores, fitted to annotated images by scripts/detect_weights.
#ifndef ORVA_DETECT_SCORE_WEIGHTS_H
#define ORVA_DETECT_SCORE_WEIGHTS_H

#include <array>

namespace orva::detect {

// A term takes part in a logit as (term - mean) / deviation, held in -3.5 ..
// 3.5, times its weight.
struct TermWeight {
  double mean;
  double deviation;
  double weight;
};

// Of the measures alone.
inline constexpr double kAloneBias = -6.93348102;
inline constexpr std::array<TermWeight, 26> kAloneWeights{{
    {0.875, 0.113636364, -0.124532032},          // Coverage
    {2.50157881, 1.24420907, 0.257356569},       // EdgeToNoise
    {0.78883481, 0.210391871, 0.643219778},      // EdgeShare
    {0.61861527, 0.254861842, 0.480346378},      // Evenness
    {0.320504367, 0.397768736, 0.987863671},     // WeakEdges
    {0.5, 0.255681818, 0.494590564},             // Slope
    {0.375, 0.198863636, -0.195345347},          // Roughness
    {0.0378463045, 0.182642931, -0.0860046698},  // Ascent
    {0.750239193, 0.175699762, 1.01253146},      // Alignment
    {0.769511819, 0.11411131, -0.107112948},     // AxisRatio
    {0.9571293, 0.0267996896, 0.506251233},      // Solidity
    {0.842585683, 0.0573177338, 0.368654613},    // Roundness
    {1.32588303, 0.519081105, 1.31162408},       // LogLevelRadius
    {1, 0.0568181818, -0.261584259},             // Visible
    {0.591206372, 0.130403486, 0.671544134},     // ContrastToSpread
    {2.05706501, 1.30551598, 0.418229395},       // ContrastToNoise
    {0.248378992, 0.272636993, 0.522109023},     // OuterQuartile
    {0.71875, 0.198863636, 0.876990964},         // SeparateRays
    {0.192307696, 0.163371109, 0.101160374},     // StrongerElsewhere
    {1.18394184, 0.500467907, 0.0526297379},     // Sharpness
    {0.261803418, 0.87825091, 0.279433163},      // EdgeToMean
    {0.105573066, 0.205538101, -0.371222134},    // OffCenter
    {0.966503203, 0.889070202, -0.249213289},    // OuterSpread
    {0.742434442, 0.188684539, 0.014085875},     // PathValue
    {0.09375, 0.0994318182, -0.0393319479},      // LongestGap
    {0.635915339, 0.173425265, 0.242324176},     // DirectionSpread
}};

// Of the measures, the first logit and the differences to the context.
inline constexpr double kInContextBias = -5.08570057;
inline constexpr std::array<TermWeight, 33> kInContextWeights{{
    {0.875, 0.113636364, -0.118804564},         // Coverage
    {2.50157881, 1.24420907, 0.236910127},      // EdgeToNoise
    {0.78883481, 0.210391871, 0.415254226},     // EdgeShare
    {0.61861527, 0.254861842, 0.364674895},     // Evenness
    {0.320504367, 0.397768736, 0.815764368},    // WeakEdges
    {0.5, 0.255681818, 0.336068011},            // Slope
    {0.375, 0.198863636, -0.188901568},         // Roughness
    {0.0378463045, 0.182642931, -0.198494267},  // Ascent
    {0.750239193, 0.175699762, 1.02712935},     // Alignment
    {0.769511819, 0.11411131, -0.136034808},    // AxisRatio
    {0.9571293, 0.0267996896, 0.429419602},     // Solidity
    {0.842585683, 0.0573177338, 0.325567875},   // Roundness
    {1.32588303, 0.519081105, 0.856972665},     // LogLevelRadius
    {1, 0.0568181818, -0.217925348},            // Visible
    {0.591206372, 0.130403486, 0.509036213},    // ContrastToSpread
    {2.05706501, 1.30551598, 0.318623521},      // ContrastToNoise
    {0.248378992, 0.272636993, 0.402010704},    // OuterQuartile
    {0.71875, 0.198863636, 0.878585221},        // SeparateRays
    {0.192307696, 0.163371109, 0.108351839},    // StrongerElsewhere
    {1.18394184, 0.500467907, 0.161215067},     // Sharpness
    {0.261803418, 0.87825091, 0.485510957},     // EdgeToMean
    {0.105573066, 0.205538101, -0.251350079},   // OffCenter
    {0.966503203, 0.889070202, -0.105319644},   // OuterSpread
    {0.742434442, 0.188684539, -0.162100545},   // PathValue
    {0.09375, 0.0994318182, -0.0317242594},     // LongestGap
    {0.635915339, 0.173425265, 0.183865369},    // DirectionSpread
    {-7.89817811, 5.11746298, 0.389491347},     // first logit
    {0, 1.08580793, 0.607697414},               // log radius
    {0.151720698, 1.02227219, -1.64443104},     // its magnitude
    {-0.130595575, 1.53425455, 0.0407456241},   // log contrast
    {-0.127330685, 1.37794247, 0.0445182382},   // log edge
    {0, 0.672071583, -0.318389406},             // inside
    {0, 0.800117268, 0.456229196},              // outside
}};

// The same where the radius is told.
inline constexpr double kToldBias = -4.03435132;
inline constexpr std::array<TermWeight, 33> kToldWeights{{
    {0.875, 0.113636364, -0.0752145314},         // Coverage
    {2.64435208, 1.22191681, 0.117094503},       // EdgeToNoise
    {0.799616098, 0.188630227, 0.254612416},     // EdgeShare
    {0.615040332, 0.24092454, 0.418140449},      // Evenness
    {0.320502073, 0.322057195, 0.454565641},     // WeakEdges
    {0.5625, 0.255681818, 0.339156602},          // Slope
    {0.4375, 0.198863636, -0.235372991},         // Roughness
    {0.0696940981, 0.179612813, -0.338023587},   // Ascent
    {0.745488256, 0.163552826, 1.37059212},      // Alignment
    {0.757241488, 0.11108596, -0.227242142},     // AxisRatio
    {0.951616108, 0.0262849518, 0.386578425},    // Solidity
    {0.826153427, 0.0536249453, 0.251095451},    // Roundness
    {1.59628528, 0.456521156, 0.457783865},      // LogLevelRadius
    {1, 0.0710227273, -0.162644435},             // Visible
    {0.605188817, 0.140148228, 0.703575423},     // ContrastToSpread
    {2.325508, 1.25825385, 0.153026667},         // ContrastToNoise
    {0.211658455, 0.296263517, 0.425786563},     // OuterQuartile
    {0.6875, 0.198863636, 1.19411285},           // SeparateRays
    {0.1875, 0.15625, 0.0256026698},             // StrongerElsewhere
    {1.28783357, 0.510172421, 0.173106},         // Sharpness
    {0.316615805, 0.844131881, 0.652855447},     // EdgeToMean
    {0.106419653, 0.2172711, -0.366589454},      // OffCenter
    {0.983695179, 0.864779669, 0.198862814},     // OuterSpread
    {0.716678739, 0.182568227, -0.373080595},    // PathValue
    {0.09375, 0.0994318182, -0.217176107},       // LongestGap
    {0.641543716, 0.175688893, 0.250873836},     // DirectionSpread
    {-7.49598684, 5.14581046, 0.341709508},      // first logit
    {0, 0.381952377, 0.240796976},               // log radius
    {0.00980468008, 0.383209162, -0.915894679},  // its magnitude
    {0, 1.46677863, 0.298437302},                // log contrast
    {0, 1.30139395, 0.0785641872},               // log edge
    {0, 0.573120877, -0.78448051},               // inside
    {0, 0.443313147, 0.820422868},               // outside
}};

}  // namespace orva::detect

#endif
