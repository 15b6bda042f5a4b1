#include <dynamics/bullet/EngineSolver.h>

#include <dynamics/bullet/JointConstraint.h>

#include <algorithm>

namespace tessarin::dynamics::bullet {

namespace {

/// Of what a joint pushed with in the last step. With all of it, joints swing up by what was solved roughly.
constexpr btScalar keptPart = 0.8F;

JointConstraint& jointOf(const btSolverConstraint& row) {
    return static_cast<JointConstraint&>(*static_cast<btTypedConstraint*>(row.m_originalContactPoint));
}

JointConstraint::Push pushOf(const btSolverConstraint& row) {
    const bool isLinear = !row.m_contactNormal1.isZero();
    return {isLinear ? row.m_contactNormal1 : row.m_relpos1CrossNormal, row.m_appliedImpulse, isLinear};
}

/// Calls visit(row, index of the row in its joint) for each of them.
template <class Visit>
void forEachJointRow(btConstraintArray& rows, Visit visit) {
    const JointConstraint* before = nullptr;
    int index = 0;
    for (int i = 0; i < rows.size(); ++i) {
        const JointConstraint* joint = &jointOf(rows[i]);
        index = joint == before ? index + 1 : 0;
        before = joint;
        visit(rows[i], index);
    }
}

} // namespace

btScalar EngineSolver::solveGroupCacheFriendlySetup(btCollisionObject** bodies, int bodyCount,
                                                    btPersistentManifold** manifolds, int manifoldCount,
                                                    btTypedConstraint** constraints, int constraintCount,
                                                    const btContactSolverInfo& info, btIDebugDraw* drawer) {
    const btScalar result = btSequentialImpulseConstraintSolver::solveGroupCacheFriendlySetup(
        bodies, bodyCount, manifolds, manifoldCount, constraints, constraintCount, info, drawer);
    for (int i = 0; i < m_tmpSolverContactConstraintPool.size(); ++i) {
        soften(m_tmpSolverContactConstraintPool[i], info);
    }
    forEachJointRow(m_tmpSolverNonContactConstraintPool, [&](btSolverConstraint& row, int index) {
        beginWithLastPush(row, jointOf(row), index, info.m_timeStep);
    });
    return result;
}

void EngineSolver::soften(btSolverConstraint& contact, const btContactSolverInfo& info) const {
    const btScalar depth = -static_cast<const btManifoldPoint*>(contact.m_originalContactPoint)->getDistance();
    const bool isSplit = contact.m_rhsPenetration != 0;
    if (depth > 0 && depth < softDepth && !isSplit) {
        const btScalar speed = depth * info.m_erp2 / info.m_timeStep;
        contact.m_rhs -= speed * (1 - depth / softDepth) * contact.m_jacDiagABInv;
    }
}

void EngineSolver::beginWithLastPush(btSolverConstraint& row, const JointConstraint& joint, int index,
                                     btScalar seconds) {
    btScalar impulse = joint.getLastPush(index, pushOf(row), seconds) * keptPart;
    btClamp(impulse, row.m_lowerLimit, row.m_upperLimit);
    row.m_appliedImpulse = impulse;
    btSolverBody& a = m_tmpSolverBodyPool[row.m_solverBodyIdA];
    btSolverBody& b = m_tmpSolverBodyPool[row.m_solverBodyIdB];
    a.internalApplyImpulse(row.m_contactNormal1 * a.internalGetInvMass(), row.m_angularComponentA, impulse);
    b.internalApplyImpulse(row.m_contactNormal2 * b.internalGetInvMass(), row.m_angularComponentB, impulse);
}

void EngineSolver::collect(const btConstraintArray& rows, std::vector<Group>& groups) {
    groups.clear();
    for (int i = 0; i < rows.size(); ++i) {
        const int first = rows[i].m_solverBodyIdA;
        const int second = rows[i].m_solverBodyIdB;
        if (groups.empty() || groups.back().first != first || groups.back().second != second) {
            groups.push_back({first, second, i, i});
        }
        groups.back().end = i + 1;
    }
}

btScalar EngineSolver::solve(btSolverConstraint& row, const Group& group) {
    return btFabs(
        m_resolveSingleConstraintRowGeneric(m_tmpSolverBodyPool[group.first], m_tmpSolverBodyPool[group.second], row));
}

btScalar EngineSolver::solveFriction(btSolverConstraint& row, const Group& group, btScalar limit) {
    row.m_lowerLimit = -limit;
    row.m_upperLimit = limit;
    return solve(row, group);
}

int EngineSolver::finish(const Group& group, btScalar change, btScalar enough) {
    ++clock;
    if (!(change > enough)) {
        return clock;
    }
    hasChanged = true;
    for (const int body : {group.first, group.second}) {
        // What doesn't move has no part in this: all that lies on one ground would be due for ever.
        if (m_tmpSolverBodyPool[body].m_originalBody) {
            changes[static_cast<std::size_t>(body)] = clock;
        }
    }
    return clock - 1; // one row of the group may have undone what another one did
}

void EngineSolver::solveJoints(Group& group, int iteration) {
    if (!isDue(group, group.time)) {
        return;
    }
    btScalar change = 0;
    for (int i = group.begin; i < group.end; ++i) {
        btSolverConstraint& row = m_tmpSolverNonContactConstraintPool[i];
        if (iteration < row.m_overrideNumSolverIterations) {
            change = std::max(change, solve(row, group));
        }
    }
    // To the last: what a joint leaves of a velocity it takes from a swing or adds to it.
    group.time = finish(group, change, 0);
}

void EngineSolver::solveContacts(Group& group) {
    if (!isDue(group, group.time)) {
        return;
    }
    btSolverBody& a = m_tmpSolverBodyPool[group.first];
    btSolverBody& b = m_tmpSolverBodyPool[group.second];
    btScalar change = 0;
    group.isLoaded = false;
    for (int i = group.begin; i < group.end; ++i) {
        btSolverConstraint& row = m_tmpSolverContactConstraintPool[i];
        change = std::max(change, btFabs(m_resolveSingleConstraintRowLowerLimit(a, b, row)));
        group.isLoaded = group.isLoaded || row.m_appliedImpulse > 0;
    }
    group.time = finish(group, change, threshold);
}

void EngineSolver::solveFrictions(Group& group) {
    if (!group.isLoaded || !isDue(group, group.frictionTime)) {
        return;
    }
    btScalar change = 0;
    for (int i = group.begin; i < group.end; ++i) {
        const btSolverConstraint& contact = m_tmpSolverContactConstraintPool[i];
        for (int j = 0; contact.m_appliedImpulse > 0 && j < frictionsPerContact; ++j) {
            btSolverConstraint& row = m_tmpSolverContactFrictionConstraintPool[contact.m_frictionIndex + j];
            change = std::max(change, solveFriction(row, group, row.m_friction * contact.m_appliedImpulse));
        }
    }
    group.frictionTime = finish(group, change, threshold);
}

void EngineSolver::solveRollings(Group& group) {
    if (!isDue(group, group.time)) {
        return;
    }
    btScalar change = 0;
    for (int i = group.begin; i < group.end; ++i) {
        btSolverConstraint& row = m_tmpSolverContactRollingFrictionConstraintPool[i];
        const btScalar load = m_tmpSolverContactConstraintPool[row.m_frictionIndex].m_appliedImpulse;
        if (load > 0) {
            change = std::max(change, solveFriction(row, group, row.m_friction * std::min(load, btScalar(1))));
        }
    }
    group.time = finish(group, change, threshold);
}

void EngineSolver::solveAllContacts(bool isBackward) {
    if (isBackward) {
        std::for_each(contacts.rbegin(), contacts.rend(), [this](Group& group) { solveContacts(group); });
    } else {
        std::for_each(contacts.begin(), contacts.end(), [this](Group& group) { solveContacts(group); });
    }
    for (Group& group : contacts) {
        solveFrictions(group);
    }
    for (Group& group : rollings) {
        solveRollings(group);
    }
}

btScalar EngineSolver::solveGroupCacheFriendlyIterations(btCollisionObject** bodies, int bodyCount,
                                                         btPersistentManifold** manifolds, int manifoldCount,
                                                         btTypedConstraint** constraints, int constraintCount,
                                                         const btContactSolverInfo& info, btIDebugDraw* drawer) {
    solveGroupCacheFriendlySplitImpulseIterations(bodies, bodyCount, manifolds, manifoldCount, constraints,
                                                  constraintCount, info, drawer);
    threshold = btSqrt(info.m_leastSquaresResidualThreshold);
    frictionsPerContact = (info.m_solverMode & SOLVER_USE_2_FRICTION_DIRECTIONS) != 0 ? 2 : 1;
    collect(m_tmpSolverNonContactConstraintPool, joints);
    collect(m_tmpSolverContactConstraintPool, contacts);
    collect(m_tmpSolverContactRollingFrictionConstraintPool, rollings);
    clock = 0;
    changes.assign(static_cast<std::size_t>(m_tmpSolverBodyPool.size()), 0);
    const int most = std::max(m_maxOverrideNumSolverIterations, info.m_numIterations);
    hasChanged = true;
    for (int i = 0; i < most && hasChanged; ++i) {
        hasChanged = false;
        for (Group& group : joints) {
            solveJoints(group, i);
        }
        if (i < info.m_numIterations) {
            solveAllContacts(i % 2 != 0);
        }
    }
    return 0;
}

btScalar EngineSolver::solveGroupCacheFriendlyFinish(btCollisionObject** bodies, int bodyCount,
                                                     const btContactSolverInfo& info) {
    forEachJointRow(m_tmpSolverNonContactConstraintPool, [&](btSolverConstraint& row, int index) {
        jointOf(row).keepPush(index, pushOf(row), info.m_timeStep);
    });
    return btSequentialImpulseConstraintSolver::solveGroupCacheFriendlyFinish(bodies, bodyCount, info);
}

} // namespace tessarin::dynamics::bullet
