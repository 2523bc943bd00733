// The best closed outline around a place, written straight from its definition.
#ifndef ORVA_TESTS_REFERENCE_OUTLINE_H
#define ORVA_TESTS_REFERENCE_OUTLINE_H

#include <optional>

#include "orva/detect/outline.h"

namespace orva::test::reference {

// As detect::bestOutline().
std::optional<detect::Outline> bestOutline(const detect::ScaleLevel& level,
                                           detect::Polarity polarity, float x, float y,
                                           detect::Band band);

}  // namespace orva::test::reference

#endif
