#pragma once

/// @file
/// The part of the Generic Math Template Library that this project uses, for machines without it: the same names, the
/// same layout, the same meaning.

#include <gmtl/Generate.h>
#include <gmtl/Matrix.h>
#include <gmtl/MatrixOps.h>
#include <gmtl/Quat.h>
#include <gmtl/QuatOps.h>
#include <gmtl/Vec.h>
#include <gmtl/VecOps.h>
