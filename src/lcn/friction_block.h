// friction_block.h: friction factors of many elements at once.
#pragma once

namespace lcn
{

/// Elements that one call works on; arrays of this size stay in the innermost cache.
inline constexpr int kFrictionBlock = 64;

/// Which instructions the block functions use. The results are the same to the last bit: neither fuses a
/// multiplication with an addition.
enum class Instructions { kBest, kPortable };

/// Swamee and Jain (1976) for count <= kFrictionBlock pairs: f[i] of Re[i] > 0 and relRough[i] >= 0, and its
/// logarithmic slope d ln f / d ln Re. Within 3e-15 of the function for one element.
void swameeJainBlock(const double* Re, const double* relRough, double* f, double* slope, int count,
                     Instructions instructions = Instructions::kBest);

/// frictionLaw for count <= kFrictionBlock elements, with its logarithmic slope. The slope of every turbulent
/// correlation is that of Swamee and Jain, from which none differs by more than some per cent.
void frictionLawBlock(int method, const double* Re, const double* relRough, const double* Cl, double* f,
                      double* slope, int count);

}  // namespace lcn
