/// \file
/// TxformMatrix: a transformation as scale, shear, rotation and translation, with pivots.
///
/// Use it for what an object's transformation is edited and animated as; compose() makes the matrix, decompose() takes
/// one apart. The main trap: the parts are not those of the other one's products, so compose matrices, not these.

#pragma once

#include "Foundation/Math/T3dDblPoint.h"
#include "Foundation/Math/TdoubleRange.h"
#include "Foundation/Math/TrotateXYZ.h"

/// What it does to a point, one after the other:
///
///   scale about the scale pivot; shear about the same; rotation about the rotation pivot; translation
///
/// At first it does nothing. The shear is (xy, xz, yz), where xy adds that many times y to x, xz of z to x, yz of z to
/// y:
///
///             1   0   0
///   shear =  xy   1   0    in the upper 3x3 of a matrix
///            xz  yz   1
///
/// \code
///   TxformMatrix xform;
///   xform.scale() = Tscale(2);
///   xform.rotate().set(kZ, Tangle(90, Tangle::kDegrees));
///   xform.translate() = T4dDblVector(0, 0, 5);
///   const T3dDblPoint p = T3dDblPoint(1, 0, 0) * xform.compose(); // (0, 2, 5)
/// \endcode
class TxformMatrix
{
public:
  constexpr TxformMatrix() noexcept = default;

  /// The parts of \p m, with pivots at the origin. What is not affine leaves what does nothing.
  explicit TxformMatrix(const T4dDblMatrix& m, TrotateXYZ::Order order = TrotateXYZ::kXYZ) noexcept
    : fRotate(Tangle(), Tangle(), Tangle(), order)
  {
    decompose(m);
  }

  FOUNDATION_API T4dDblMatrix compose() const noexcept;

  /// Takes over the parts that make \p m with the pivots and the order of rotations that are set. False, and nothing
  /// changed, if \p m is not affine. Composed again they give \p m back up to rounding, singular matrices too, with (0,
  /// 0, 0, 1) for a column 3 that isAffine() takes for that. One that mirrors has a negative scale along x.
  FOUNDATION_API bool decompose(const T4dDblMatrix& m) noexcept;

  constexpr Tscale& scale() noexcept { return fScale; }
  constexpr T4dDblVector& shear() noexcept { return fShear; }
  constexpr TrotateXYZ& rotate() noexcept { return fRotate; }
  constexpr T4dDblVector& translate() noexcept { return fTranslate; }
  constexpr T3dDblPoint& scalePivot() noexcept { return fScalePivot; }
  constexpr T3dDblPoint& rotatePivot() noexcept { return fRotatePivot; }
  constexpr const Tscale& scale() const noexcept { return fScale; }
  constexpr const T4dDblVector& shear() const noexcept { return fShear; }
  constexpr const TrotateXYZ& rotate() const noexcept { return fRotate; }
  constexpr const T4dDblVector& translate() const noexcept { return fTranslate; }
  constexpr const T3dDblPoint& scalePivot() const noexcept { return fScalePivot; }
  constexpr const T3dDblPoint& rotatePivot() const noexcept { return fRotatePivot; }

  /// Whether all parts are equal.
  constexpr bool operator==(const TxformMatrix& x) const noexcept
  {
    return fScale == x.fScale && fShear == x.fShear && fRotate == x.fRotate && fTranslate == x.fTranslate &&
           fScalePivot == x.fScalePivot && fRotatePivot == x.fRotatePivot;
  }
  constexpr bool operator!=(const TxformMatrix& x) const noexcept { return !(*this == x); }

  /// The parts in their order, the pivots behind theirs.
  FOUNDATION_API friend std::ostream& operator<<(std::ostream& out, const TxformMatrix& x);

private:
  T4dDblMatrix scaleAndShear() const noexcept;
  T4dDblVector translationOf(const T4dDblMatrix& scaleAndShear, const T4dDblMatrix& rotation) const noexcept;

  Tscale fScale;
  T4dDblVector fShear;
  TrotateXYZ fRotate;
  T4dDblVector fTranslate;
  T3dDblPoint fScalePivot, fRotatePivot;
};

template <>
struct std::hash<TxformMatrix>
{
  std::size_t operator()(const TxformMatrix& x) const noexcept
  {
    return std::hash<T4dDblMatrix>()(x.compose()); // equal ones compose alike
  }
};
