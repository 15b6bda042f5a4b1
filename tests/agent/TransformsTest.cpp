#include <tests/agent/AgentTest.h>

#include <gmtl/Generate.h>

#include <osg/AutoTransform>
#include <osg/MatrixTransform>
#include <osg/PositionAttitudeTransform>

#include <numeric>

namespace tessarin::agent {
namespace {

using Matrix = gmtl::Matrix<double, 4, 4>;
using Rotation = gmtl::Quat<double>;

const Rotation thirdTurn(0.5, 0.5, 0.5, 0.5); // x becomes y, and y z

TEST(Transform, NumbersCrossInStorageOrderAndPositionAndRotationApart) {
    AgentNode node, other;
    double numbers[16];
    std::iota(numbers, numbers + 16, 0.5);
    Matrix matrix;
    matrix.set(numbers);
    node.setMatrix(matrix);
    const osg::Matrixd stored = node.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_TRUE(std::equal(numbers, numbers + 16, stored.ptr()));
    EXPECT_TRUE(node.getMatrix() == matrix && node.getMatrix().mState == Matrix::FULL);
    EXPECT_TRUE(node.getPosition() == vec(12.5, 13.5, 14.5)) << "the last row there is the last column here";
    gmtl::Matrix<float, 4, 4> small;
    std::copy(numbers, numbers + 16, small.mData);
    other.setMatrix(small);
    EXPECT_TRUE(other.getMatrix() == matrix);

    AgentNode turned;
    turned.setPosition(vec(1, 2, 3));
    turned.setRotation(thirdTurn);
    EXPECT_TRUE(turned.getPosition() == vec(1, 2, 3));
    turned.setPosition(vec(4, 5, 6));
    EXPECT_TRUE(turned.getRotation() == thirdTurn);
    const osg::Vec3d x = osg::Vec3d(1, 0, 0) * turned.getOsgTransform()->asMatrixTransform()->getMatrix();
    EXPECT_EQ(x, osg::Vec3d(4, 6, 6));
}

TEST(Transform, TheWorldIsTheFirstPathDownTheSceneGraph) {
    AgentNode root, second;
    AgentNode* const child = root.addChild("child");
    root.setPosition(vec(0, 2, 0));
    root.setRotation(thirdTurn);
    child->setPosition(vec(1, 0, 0));
    second.setPosition(vec(100, 0, 0));
    second.addChild(child);
    const osg::ref_ptr<osg::MatrixTransform> above = new osg::MatrixTransform(osg::Matrix::translate(0, 0, 5));
    above->addChild(root.getOsgTransform()); // transforms that belong to no agent count as well
    EXPECT_TRUE(child->getPosition() == vec(1, 0, 0) && child->getWorldPosition() == vec(0, 3, 5));
    EXPECT_TRUE(child->getWorldRotation() == thirdTurn);
    second.removeChild(child);
}

TEST(Transform, OtherKindsThanMatrixTransforms) {
    AgentNode root;
    root.setPosition(vec(10, 0, 0));
    AgentNode* const node = root.addChild("child");
    const osg::ref_ptr<osg::PositionAttitudeTransform> pose = new osg::PositionAttitudeTransform;
    pose->setPosition({1, 2, 3});
    pose->setScale({2, 2, 2});
    pose->setPivotPoint({1, 0, 0});
    root.getOsgTransform()->addChild(pose);
    node->setOsgTransform(pose);
    EXPECT_TRUE(node->getPosition() == vec(-1, 2, 3)) << "the scaled pivot is in the matrix";
    EXPECT_TRUE(node->getWorldPosition() == node->getPosition()) << "parents are not asked";
    Matrix matrix;
    gmtl::setRot(matrix, thirdTurn);
    gmtl::setTrans(matrix, vec(7, 8, 9));
    node->setMatrix(matrix);
    EXPECT_TRUE(pose->getPosition() == osg::Vec3d(7, 8, 9) && pose->getAttitude() == osg::Quat(0.5, 0.5, 0.5, 0.5));
    EXPECT_TRUE(pose->getScale() == osg::Vec3d(2, 2, 2) && pose->getPivotPoint() == osg::Vec3d(1, 0, 0));

    const osg::ref_ptr<osg::AutoTransform> strange = new osg::AutoTransform;
    for (osg::Transform* const transform :
         {static_cast<osg::Transform*>(strange.get()), static_cast<osg::Transform*>(nullptr)}) {
        node->setOsgTransform(transform);
        node->setPosition(vec(1, 2, 3));
        node->setRotation(thirdTurn);
        EXPECT_TRUE(node->getMatrix() == Matrix() && node->getWorldMatrix() == Matrix());
        EXPECT_EQ(strange->getPosition(), osg::Vec3d());
    }
}

} // namespace
} // namespace tessarin::agent
