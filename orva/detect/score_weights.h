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
inline constexpr double kAloneBias = -7.20581372;
inline constexpr std::array<TermWeight, 26> kAloneWeights{{
    {0.875, 0.113636364, 0.139220939},          // Coverage
    {2.57646132, 1.12489857, 0.70320495},       // EdgeToNoise
    {0.793697357, 0.22346712, 0.238811763},     // EdgeShare
    {0.587174416, 0.249420987, 0.323105311},    // Evenness
    {0.284784541, 0.383293452, 0.410829337},    // WeakEdges
    {0.5, 0.284090909, 0.263678782},            // Slope
    {0.375, 0.198863636, 0.0373319481},         // Roughness
    {0.040097395, 0.179382859, -0.104754353},   // Ascent
    {0.73948887, 0.176576559, 0.80298927},      // Alignment
    {0.75987339, 0.113197188, -0.300261753},    // AxisRatio
    {0.957202673, 0.0260556367, 0.444035787},   // Solidity
    {0.840249896, 0.0572613957, 0.601696131},   // Roundness
    {1.38104498, 0.512320037, 1.05072592},      // LogLevelRadius
    {1, 0.0710227273, -0.307585235},            // Visible
    {0.595536023, 0.131897876, 0.541672529},    // ContrastToSpread
    {2.16974008, 1.18768187, 0.808500384},      // ContrastToNoise
    {0.224434234, 0.288036454, 0.435025549},    // OuterQuartile
    {0.6875, 0.184659091, 0.764975459},         // SeparateRays
    {0.21875, 0.15625, -0.0729469119},          // StrongerElsewhere
    {1.22337991, 0.496223128, 0.194315345},     // Sharpness
    {0.372885466, 0.834836402, -0.0503399542},  // EdgeToMean
    {0.107869022, 0.210786037, -0.259999978},   // OffCenter
    {1.08312422, 0.860477416, -0.306805005},    // OuterSpread
    {0.728024125, 0.178579394, -0.155440262},   // PathValue
    {0.09375, 0.113636364, -0.118130782},       // LongestGap
    {0.616970152, 0.193862613, 0.15425653},     // DirectionSpread
}};

// Of the measures, the first logit and the differences to the context.
inline constexpr double kInContextBias = -5.78062497;
inline constexpr std::array<TermWeight, 33> kInContextWeights{{
    {0.875, 0.113636364, 0.158784303},         // Coverage
    {2.57646132, 1.12489857, 0.609769659},     // EdgeToNoise
    {0.793697357, 0.22346712, 0.110543195},    // EdgeShare
    {0.587174416, 0.249420987, 0.306048209},   // Evenness
    {0.284784541, 0.383293452, 0.26499672},    // WeakEdges
    {0.5, 0.284090909, 0.1542204},             // Slope
    {0.375, 0.198863636, -0.0248729328},       // Roughness
    {0.040097395, 0.179382859, -0.201549955},  // Ascent
    {0.73948887, 0.176576559, 0.814493654},    // Alignment
    {0.75987339, 0.113197188, -0.253443163},   // AxisRatio
    {0.957202673, 0.0260556367, 0.372677104},  // Solidity
    {0.840249896, 0.0572613957, 0.451736285},  // Roundness
    {1.38104498, 0.512320037, 0.600360102},    // LogLevelRadius
    {1, 0.0710227273, -0.255140457},           // Visible
    {0.595536023, 0.131897876, 0.455103487},   // ContrastToSpread
    {2.16974008, 1.18768187, 0.661054005},     // ContrastToNoise
    {0.224434234, 0.288036454, 0.305128072},   // OuterQuartile
    {0.6875, 0.184659091, 0.714270742},        // SeparateRays
    {0.21875, 0.15625, -0.00642247852},        // StrongerElsewhere
    {1.22337991, 0.496223128, 0.269121418},    // Sharpness
    {0.372885466, 0.834836402, 0.15722221},    // EdgeToMean
    {0.107869022, 0.210786037, -0.116809779},  // OffCenter
    {1.08312422, 0.860477416, -0.141823922},   // OuterSpread
    {0.728024125, 0.178579394, -0.228627388},  // PathValue
    {0.09375, 0.113636364, -0.0765592204},     // LongestGap
    {0.616970152, 0.193862613, 0.185253966},   // DirectionSpread
    {-8.36918741, 5.42626228, 0.663576185},    // first logit
    {-0.0425502573, 1.09900098, 0.554806323},  // log radius
    {0.194632127, 1.03169409, -1.30459342},    // its magnitude
    {-0.233677936, 1.54525616, 0.0429351532},  // log contrast
    {-0.209324104, 1.40196471, 0.0688438812},  // log edge
    {0, 0.670254238, -0.526497263},            // inside
    {0, 0.573805421, 0.472093113},             // outside
}};

// The same where the radius is told.
inline constexpr double kToldBias = -4.63540403;
inline constexpr std::array<TermWeight, 33> kToldWeights{{
    {0.84375, 0.0994318182, 0.191921858},       // Coverage
    {2.69038808, 1.13445137, 0.585041711},      // EdgeToNoise
    {0.804820806, 0.20410774, 0.0989037039},    // EdgeShare
    {0.57099852, 0.230202673, 0.256369894},     // Evenness
    {0.278504476, 0.287803395, 0.166022753},    // WeakEdges
    {0.625, 0.227272727, 0.215725576},          // Slope
    {0.5, 0.170454545, -0.116235078},           // Roughness
    {0.0867563188, 0.174721055, -0.258608928},  // Ascent
    {0.731487215, 0.164213985, 1.12724795},     // Alignment
    {0.744431823, 0.109248583, -0.227074501},   // AxisRatio
    {0.9493981, 0.0258935473, 0.422784548},     // Solidity
    {0.818755537, 0.0538997488, 0.342722577},   // Roundness
    {1.76183236, 0.524396223, 0.351534098},     // LogLevelRadius
    {1, 0.0710227273, -0.183438401},            // Visible
    {0.612701863, 0.150310845, 0.723809237},    // ContrastToSpread
    {2.474787, 1.33334644, 0.518769502},        // ContrastToNoise
    {0.163700894, 0.323427826, 0.307974464},    // OuterQuartile
    {0.678571403, 0.190677891, 0.978736009},    // SeparateRays
    {0.192928039, 0.15378271, -0.0675249947},   // StrongerElsewhere
    {1.39276016, 0.486095987, 0.27156854},      // Sharpness
    {0.451969773, 0.78663156, 0.212220466},     // EdgeToMean
    {0.112084318, 0.223549242, -0.282839594},   // OffCenter
    {1.16303456, 0.806756626, 0.0794616777},    // OuterSpread
    {0.690676749, 0.172185896, -0.303281829},   // PathValue
    {0.09375, 0.0994318182, -0.0766163732},     // LongestGap
    {0.627586812, 0.198148947, 0.204723181},    // DirectionSpread
    {-7.98659955, 5.45755642, 0.647572335},     // first logit
    {0, 0.388237004, 0.272933844},              // log radius
    {0, 0.389821371, -0.655395149},             // its magnitude
    {0, 1.56675776, -0.0950631387},             // log contrast
    {0, 1.41431114, -0.0637190795},             // log edge
    {0, 0.579606614, -0.632362869},             // inside
    {0, 0.409276546, 0.529627268},              // outside
}};

}  // namespace orva::detect

#endif
