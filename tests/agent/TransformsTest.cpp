#include "AgentTest.h"

#include <gmtl/Generate.h>

#include <osg/AutoTransform>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>

#include <algorithm>
#include <cmath>

namespace tessarin::agent {
namespace {

using Matrix = gmtl::Matrix<double, 4, 4>;
using Rotation = gmtl::Quat<double>;

constexpr int full = 64;
constexpr int identity = 1;
const double half = std::sqrt(0.5); // of a quarter turn

void expectIdentity(const Matrix& matrix, int state) {
    EXPECT_TRUE(std::equal(matrix.getData(), matrix.getData() + 16, Matrix().getData()));
    EXPECT_EQ(matrix.mState, state);
}

TEST(Transform, ANewAgentStandsAtTheOrigin) {
    AgentNode node;
    expectIdentity(node.getMatrix(), full);
    expectIdentity(node.getWorldMatrix(), full);
    EXPECT_TRUE(node.getPosition() == vec(0, 0, 0));
    EXPECT_TRUE(node.getRotation() == Rotation(0.0, 0.0, 0.0, 1.0));
    EXPECT_TRUE(node.getVelocity() == (gmtl::Vec<float, 3>(0.0f, 0.0f, 0.0f)));
    node.setVelocity({1.0f, 2.0f, 3.0f});
    EXPECT_EQ(node.getVelocity()[1], 2.0f);
    expectIdentity(node.getMatrix(), full);
}

TEST(Transform, TheSixteenNumbersCrossInStorageOrder) {
    AgentNode node;
    double numbers[16];
    for (int i = 0; i < 16; ++i)
        numbers[i] = i + 0.5;
    Matrix matrix;
    matrix.set(numbers);
    node.setMatrix(matrix);
    const osg::Matrixd stored = node.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_TRUE(std::equal(numbers, numbers + 16, stored.ptr()));
    EXPECT_EQ(stored(3, 1), 13.5) << "the last row of OpenSceneGraph's";
    EXPECT_EQ(matrix(1, 3), 13.5) << "is the last column of GMTL's";
    EXPECT_TRUE(node.getMatrix() == matrix);
    EXPECT_EQ(node.getMatrix().mState, full);
    EXPECT_TRUE(node.getPosition() == vec(12.5, 13.5, 14.5));

    gmtl::Matrix<float, 4, 4> small;
    std::copy(numbers, numbers + 16, small.mData);
    AgentNode other;
    other.setMatrix(small);
    EXPECT_TRUE(other.getMatrix() == matrix);
}

TEST(Transform, PositionAndRotationLeaveEachOtherAlone) {
    AgentNode node;
    node.setPosition(vec(1, 2, 3));
    node.setRotation(Rotation(0.0, 0.0, half, half)); // x becomes y
    const Matrix matrix = node.getMatrix();
    EXPECT_TRUE(node.getPosition() == vec(1, 2, 3));
    EXPECT_NEAR(matrix(1, 0), 1.0, 1e-15);
    EXPECT_NEAR(matrix(0, 1), -1.0, 1e-15);
    node.setPosition(vec(4, 5, 6));
    const Matrix moved = node.getMatrix();
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(moved[i % 4][i / 4], i >= 12 && i < 15 ? i - 8.0 : matrix[i % 4][i / 4]) << i;
    EXPECT_EQ(moved.mState, full);
    const osg::Vec3d turned = osg::Vec3d(1, 0, 0) * node.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_NEAR((turned - osg::Vec3d(4, 6, 6)).length(), 0.0, 1e-15) << "OpenSceneGraph turns the same way";

    // Half a turn has a trace below 0, and a quaternion without w.
    for (const Rotation& rotation : {Rotation(1.0, 0.0, 0.0, 0.0), Rotation(0.0, 1.0, 0.0, 0.0),
                                     Rotation(0.0, 0.0, 1.0, 0.0), Rotation(0.6, 0.0, 0.8, 0.0)}) {
        node.setRotation(rotation);
        for (int i = 0; i < 4; ++i)
            EXPECT_NEAR(node.getRotation()[i], rotation[i], 1e-15);
    }
}

TEST(Transform, TheWorldIsTheFirstPathDownTheSceneGraph) {
    AgentNode root;
    root.setPosition(vec(0, 2, 0));
    AgentNode* const child = root.addChild("child");
    child->setPosition(vec(1, 0, 0));
    EXPECT_TRUE(child->getPosition() == vec(1, 0, 0));
    EXPECT_TRUE(child->getWorldPosition() == vec(1, 2, 0));
    root.setRotation(Rotation(0.0, 0.0, half, half));
    EXPECT_NEAR(child->getWorldPosition()[1], 3.0, 1e-15);
    EXPECT_NEAR(child->getWorldRotation()[2], half, 1e-15);
    const osg::ref_ptr<osg::MatrixTransform> above = new osg::MatrixTransform(osg::Matrix::translate(0, 0, 5));
    above->addChild(root.getOsgTransform());
    EXPECT_EQ(child->getWorldPosition()[2], 5.0) << "transforms that belong to no agent count as well";

    AgentNode second;
    second.setPosition(vec(100, 0, 0));
    second.addChild(child);
    EXPECT_EQ(child->getWorldPosition()[2], 5.0);
    second.removeChild(child);
}

TEST(Transform, APositionAttitudeTransformKeepsItsScaleAndPivot) {
    AgentNode root;
    root.setPosition(vec(10, 0, 0));
    AgentNode* const node = root.addChild("child");
    const osg::ref_ptr<osg::PositionAttitudeTransform> pose = new osg::PositionAttitudeTransform;
    pose->setPosition(osg::Vec3d(1, 2, 3));
    pose->setScale(osg::Vec3d(2, 2, 2));
    pose->setPivotPoint(osg::Vec3d(1, 0, 0));
    root.getOsgTransform()->addChild(pose);
    node->setOsgTransform(pose);
    EXPECT_TRUE(node->getPosition() == vec(-1, 2, 3)) << "the scaled pivot is in the matrix";
    EXPECT_EQ(node->getMatrix()(0, 0), 2.0);
    EXPECT_EQ(node->getMatrix().mState, full);
    EXPECT_TRUE(node->getWorldPosition() == node->getPosition()) << "parents are not asked";

    Matrix matrix;
    gmtl::setRot(matrix, Rotation(0.0, 0.0, half, half));
    gmtl::setTrans(matrix, vec(7, 8, 9));
    node->setMatrix(matrix);
    EXPECT_EQ(pose->getPosition(), osg::Vec3d(7, 8, 9));
    EXPECT_NEAR((pose->getAttitude() - osg::Quat(0, 0, half, half)).length(), 0.0, 1e-15);
    EXPECT_EQ(pose->getScale(), osg::Vec3d(2, 2, 2));
    EXPECT_EQ(pose->getPivotPoint(), osg::Vec3d(1, 0, 0));
}

TEST(Transform, OtherKindsReadAsTheIdentityAndIgnoreWrites) {
    for (const osg::ref_ptr<osg::Transform>& transform :
         {osg::ref_ptr<osg::Transform>(new osg::AutoTransform), osg::ref_ptr<osg::Transform>()}) {
        AgentNode root;
        root.setPosition(vec(1, 1, 1));
        AgentNode node;
        node.setOsgTransform(transform);
        root.addChild(&node);
        node.setPosition(vec(1, 2, 3));
        node.setRotation(Rotation(0.0, 0.0, 1.0, 0.0));
        expectIdentity(node.getMatrix(), identity);
        expectIdentity(node.getWorldMatrix(), identity);
        if (transform) {
            EXPECT_EQ(transform->asAutoTransform()->getPosition(), osg::Vec3d());
        }
        root.removeChild(&node);
    }
}

} // namespace
} // namespace tessarin::agent
