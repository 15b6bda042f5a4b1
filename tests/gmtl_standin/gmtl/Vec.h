#pragma once

/// @file
/// Stands in for the GMTL that a machine may have, so that sources and tests are known to compile with it as well:
/// there sums and products of vectors are expressions, which become numbers when a vector takes them over. Only for
/// compiling; what isn't here comes from gmtl_fallback/.

namespace gmtl {

/// Marks a VecBase that holds numbers. Any other representation computes them.
struct Stored {};

template <class DATA_TYPE, unsigned SIZE, class REP = Stored>
class VecBase {
public:
    using DataType = DATA_TYPE;

    enum Params { Size = SIZE };

    explicit VecBase(const REP& newRep) : rep(newRep) {}

    DATA_TYPE operator[](const unsigned i) const { return rep[i]; }

private:
    REP rep;
};

template <class DATA_TYPE, unsigned SIZE>
class VecBase<DATA_TYPE, SIZE, Stored> {
public:
    using DataType = DATA_TYPE;

    enum Params { Size = SIZE };

    DATA_TYPE& operator[](const unsigned i) { return mData[i]; }
    const DATA_TYPE& operator[](const unsigned i) const { return mData[i]; }

    DATA_TYPE* getData() { return mData; }
    const DATA_TYPE* getData() const { return mData; }

    DATA_TYPE mData[SIZE] = {};
};

template <class DATA_TYPE, unsigned SIZE>
class Vec : public VecBase<DATA_TYPE, SIZE, Stored> {
public:
    using DataType = DATA_TYPE;

    enum Params { Size = SIZE };

    Vec() = default;

    template <class REP>
    Vec(const VecBase<DATA_TYPE, SIZE, REP>& expression) {
        for (unsigned i = 0; i < SIZE; ++i)
            (*this)[i] = expression[i];
    }

    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1) { set(val0, val1); }
    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2) { set(val0, val1, val2); }
    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2, const DATA_TYPE& val3) {
        set(val0, val1, val2, val3);
    }

    template <class... Values>
    void set(const DATA_TYPE& val0, const DATA_TYPE& val1, const Values&... values) {
        const DATA_TYPE all[] = {val0, val1, values...};
        static_assert(sizeof all == sizeof this->mData, "as many values as the vector has");
        set(all);
    }

    void set(const DATA_TYPE* dataPtr) {
        for (unsigned i = 0; i < SIZE; ++i)
            (*this)[i] = dataPtr[i];
    }
};

using Vec2i = Vec<int, 2>;
using Vec2f = Vec<float, 2>;
using Vec2d = Vec<double, 2>;
using Vec3i = Vec<int, 3>;
using Vec3f = Vec<float, 3>;
using Vec3d = Vec<double, 3>;
using Vec4i = Vec<int, 4>;
using Vec4f = Vec<float, 4>;
using Vec4d = Vec<double, 4>;

} // namespace gmtl
