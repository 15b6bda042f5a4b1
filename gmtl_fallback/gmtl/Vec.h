#pragma once

namespace gmtl {

/// Numbers side by side: the part of Vec that arithmetic works on.
///
/// The result of arithmetic is of this type and becomes a Vec when it is stored in one, so code that needs a Vec names
/// one. Headers that compute lazily ask the same of their callers.
template <class DATA_TYPE, unsigned SIZE>
class VecBase {
public:
    using DataType = DATA_TYPE;

    enum Params { Size = SIZE };

    DATA_TYPE& operator[](const unsigned i) { return mData[i]; }
    const DATA_TYPE& operator[](const unsigned i) const { return mData[i]; }

    DATA_TYPE* getData() { return mData; }
    const DATA_TYPE* getData() const { return mData; }

    DATA_TYPE mData[SIZE];
};

/// A vector of SIZE numbers, all zero after construction. Holds nothing but the numbers, in order.
template <class DATA_TYPE, unsigned SIZE>
class Vec : public VecBase<DATA_TYPE, SIZE> {
public:
    Vec() {
        for (unsigned i = 0; i < SIZE; ++i) {
            this->mData[i] = DATA_TYPE(0);
        }
    }

    Vec(const VecBase<DATA_TYPE, SIZE>& rhs) : VecBase<DATA_TYPE, SIZE>(rhs) {}

    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1) { set(val0, val1); }
    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2) { set(val0, val1, val2); }
    Vec(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2, const DATA_TYPE& val3) {
        set(val0, val1, val2, val3);
    }

    void set(const DATA_TYPE& val0, const DATA_TYPE& val1) {
        static_assert(SIZE == 2, "two values fill a Vec of two");
        this->mData[0] = val0;
        this->mData[1] = val1;
    }

    void set(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2) {
        static_assert(SIZE == 3, "three values fill a Vec of three");
        this->mData[0] = val0;
        this->mData[1] = val1;
        this->mData[2] = val2;
    }

    void set(const DATA_TYPE& val0, const DATA_TYPE& val1, const DATA_TYPE& val2, const DATA_TYPE& val3) {
        static_assert(SIZE == 4, "four values fill a Vec of four");
        this->mData[0] = val0;
        this->mData[1] = val1;
        this->mData[2] = val2;
        this->mData[3] = val3;
    }

    /// Takes SIZE values.
    void set(const DATA_TYPE* dataPtr) {
        for (unsigned i = 0; i < SIZE; ++i) {
            this->mData[i] = dataPtr[i];
        }
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
