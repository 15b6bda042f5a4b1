#include <agent/AgentNode.h>

#include <gmtl/Generate.h>

#include <osg/MatrixTransform>
#include <osg/Matrixd>
#include <osg/PositionAttitudeTransform>

#include <algorithm>

namespace tessarin::agent {

using Matrix = gmtl::Matrix<double, 4, 4>;
using Position = gmtl::Vec<double, 3>;
using Rotation = gmtl::Quat<double>;

namespace {

// GMTL multiplies columns and OpenSceneGraph rows, and each stores its own order: the sixteen numbers are the same.
Matrix toGmtl(const osg::Matrixd& matrix) {
    Matrix result;
    result.set(matrix.ptr());
    return result;
}

Position translationOf(const Matrix& matrix) {
    return {matrix(0, 3), matrix(1, 3), matrix(2, 3)};
}

Rotation rotationOf(const Matrix& matrix) {
    Rotation rotation;
    gmtl::set(rotation, matrix);
    return rotation;
}

Matrix localMatrixOf(const osg::PositionAttitudeTransform& transform) {
    osg::Matrixd matrix;
    transform.computeLocalToWorldMatrix(matrix, nullptr);
    return toGmtl(matrix);
}

} // namespace

Matrix AgentNode::getMatrix() {
    if (!osgTransform)
        return {};
    if (const osg::MatrixTransform* const transform = osgTransform->asMatrixTransform())
        return toGmtl(transform->getMatrix());
    if (const osg::PositionAttitudeTransform* const transform = osgTransform->asPositionAttitudeTransform())
        return localMatrixOf(*transform);
    return {};
}

void AgentNode::setMatrix(const Matrix& matrix) {
    if (!osgTransform)
        return;
    if (osg::MatrixTransform* const transform = osgTransform->asMatrixTransform()) {
        transform->setMatrix(osg::Matrixd(matrix.getData()));
    } else if (osg::PositionAttitudeTransform* const pose = osgTransform->asPositionAttitudeTransform()) {
        const Position position = translationOf(matrix);
        const Rotation rotation = rotationOf(matrix);
        pose->setPosition(osg::Vec3d(position[0], position[1], position[2]));
        pose->setAttitude(osg::Quat(rotation[0], rotation[1], rotation[2], rotation[3]));
    }
}

void AgentNode::setMatrix(const gmtl::Matrix<float, 4, 4>& matrix) {
    Matrix widened;
    std::copy(matrix.getData(), matrix.getData() + 16, widened.mData);
    widened.mState = matrix.mState;
    setMatrix(widened);
}

Position AgentNode::getPosition() {
    return translationOf(getMatrix());
}

void AgentNode::setPosition(const Position& position) {
    Matrix matrix = getMatrix();
    gmtl::setTrans(matrix, position);
    setMatrix(matrix);
}

Rotation AgentNode::getRotation() {
    return rotationOf(getMatrix());
}

void AgentNode::setRotation(const Rotation& rotation) {
    Matrix matrix = getMatrix();
    gmtl::setRot(matrix, rotation);
    setMatrix(matrix);
}

Matrix AgentNode::getWorldMatrix() {
    if (!osgTransform)
        return {};
    if (osgTransform->asMatrixTransform()) {
        const osg::MatrixList matrices = osgTransform->getWorldMatrices();
        return toGmtl(matrices.empty() ? osg::Matrixd() : osg::Matrixd(matrices.front()));
    }
    if (const osg::PositionAttitudeTransform* const transform = osgTransform->asPositionAttitudeTransform())
        return localMatrixOf(*transform);
    return {};
}

Position AgentNode::getWorldPosition() {
    return translationOf(getWorldMatrix());
}

Rotation AgentNode::getWorldRotation() {
    return rotationOf(getWorldMatrix());
}

} // namespace tessarin::agent
