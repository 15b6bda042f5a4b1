#pragma once

#include <btBulletDynamicsCommon.h>

#include <vector>

namespace tessarin::dynamics::bullet {

class JointConstraint;

/// The engine's solver, which works only where there is work left, and begins closer to the solution.
///
/// - Rows between two bodies are solved again only while they, or others at these bodies, change velocities by more
/// than
///   the threshold for residuals in the solver's settings. What rests needs one or two rounds, and what moves in one
///   place doesn't cost anything in another.
/// - Rows of contacts are gone through forward and backward in turn, so that loads pass through a stack both ways.
/// - Joints begin with most of what they pushed with in the last step, as contacts do.
/// - What is hardly deep is pushed out softly: at full strength, stacks tremble.
class EngineSolver : public btSequentialImpulseConstraintSolver {
public:
    /// From which depth on contacts are pushed out at full strength.
    void setSoftDepth(btScalar depth) { softDepth = depth; }

protected:
    btScalar solveGroupCacheFriendlySetup(btCollisionObject** bodies, int bodyCount, btPersistentManifold** manifolds,
                                          int manifoldCount, btTypedConstraint** constraints, int constraintCount,
                                          const btContactSolverInfo& info, btIDebugDraw* drawer) override;
    btScalar solveGroupCacheFriendlyIterations(btCollisionObject** bodies, int bodyCount,
                                               btPersistentManifold** manifolds, int manifoldCount,
                                               btTypedConstraint** constraints, int constraintCount,
                                               const btContactSolverInfo& info, btIDebugDraw* drawer) override;
    btScalar solveGroupCacheFriendlyFinish(btCollisionObject** bodies, int bodyCount,
                                           const btContactSolverInfo& info) override;

private:
    /// Rows that follow each other and lie between the same two bodies.
    struct Group {
        int first;
        int second;
        int begin;
        int end;

        /// When the rows were last solved, and those of friction that belong to them.
        int time = -1;
        int frictionTime = -1;
        bool isLoaded = false;
    };

    void soften(btSolverConstraint& contact, const btContactSolverInfo& info) const;
    void beginWithLastPush(btSolverConstraint& row, const JointConstraint& joint, int index, btScalar seconds);
    static void collect(const btConstraintArray& rows, std::vector<Group>& groups);

    bool isDue(const Group& group, int time) const {
        return changes[static_cast<std::size_t>(group.first)] > time ||
               changes[static_cast<std::size_t>(group.second)] > time;
    }
    btScalar solve(btSolverConstraint& row, const Group& group);
    btScalar solveFriction(btSolverConstraint& row, const Group& group, btScalar limit);

    /// @return the time at which the group counts as solved.
    int finish(const Group& group, btScalar change, btScalar threshold);

    void solveJoints(Group& group, int iteration);
    void solveContacts(Group& group);
    void solveFrictions(Group& group);
    void solveRollings(Group& group);
    void solveAllContacts(bool isBackward);

    std::vector<Group> joints;
    std::vector<Group> contacts;
    std::vector<Group> rollings;

    /// For each body, when its velocity has last changed. Time counts groups that have been solved.
    std::vector<int> changes;
    int clock = 0;
    bool hasChanged = false;

    btScalar threshold = 0;
    btScalar softDepth = 0;
    int frictionsPerContact = 1;
};

} // namespace tessarin::dynamics::bullet
