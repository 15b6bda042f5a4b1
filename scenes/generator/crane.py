"""Makes models/crane.dae and crane.xml: a tower crane that slews, moves its trolley and lifts, with a load on a chain."""

import math
import pathlib

import chains
from agents import FIXED, MOVABLE, PLAYABLE, motor, write
from collada import Document
from meshes import Mesh, beam, box, lathe

TURNTABLE = 6.2  # height of the slewing joint
JIB_FRONT, JIB_BACK = 9.0, -3.4  # ends of the jib, from the mast's axis
GIRDER, DEPTH = 0.4, 0.75  # half of the jib's width, and its height
TROLLEY = 5.5  # where the trolley is at first
REACH = (-3.3, 3.0)  # how far it moves from there
LIFT = (-1.9, 0.3)
SLEW = 150  # degrees to each side
RAM = 2.3  # length of the hoist's ram
LINKS = 5
LOAD = (0.7, 0.5, 0.45)  # half extents
SLING = 0.75  # from the load's lid to the hook
SLEW_SPEED, TROLLEY_SPEED, LIFT_SPEED = 0.35, 1.2, 0.5


def lattice(mesh, material, corners, start, end, step, place, bar):
    """Bars along and across a frame; `place` makes a point of a corner (u, v) and a length along it."""
    for u, v in corners:
        beam(mesh, material, place(u, v, start), place(u, v, end), bar)
    count = round((end - start) / step)
    for i in range(count):
        at, to = (start + (end - start) * k / count for k in (i, i + 1))
        for (u0, v0), (u1, v1) in zip(corners, corners[1:] + corners[:1]):
            first, second = ((u0, v0), (u1, v1)) if i % 2 else ((u1, v1), (u0, v0))
            beam(mesh, material, place(*first, at), place(*second, to), bar * 0.55)


def mast_mesh():
    mesh, half = Mesh(), 0.5
    box(mesh, "concrete", (1.6, 1.6, 0.25), (0, 0, 0.25), bevel=0.04)
    lattice(mesh, "yellow", [(-half, -half), (half, -half), (half, half), (-half, half)], 0.4, TURNTABLE - 0.25, 0.9,
            lambda u, v, z: (u, v, z), 0.13)
    lathe(mesh, "iron", [(0, -0.3), (0.8, -0.3), (0.8, -0.05), (0, -0.05)], 32, centre=(0, 0, TURNTABLE))
    return mesh


def jib_mesh():
    """Its origin is on the turntable; the trolley hangs below it."""
    mesh, low = Mesh(), 0.35
    lathe(mesh, "iron", [(0, -0.04), (0.72, -0.04), (0.72, 0.3), (0, 0.3)], 32)
    for side in (-GIRDER, GIRDER):
        # The two sides of the jib leave room for the ram between them.
        ends = [(0, low), (0, low + DEPTH)]
        for _, z in ends:
            beam(mesh, "yellow", (JIB_BACK, side, z), (JIB_FRONT, side, z), 0.1)
        count = 14
        for i in range(count):
            x0, x1 = (JIB_BACK + (JIB_FRONT - JIB_BACK) * k / count for k in (i, i + 1))
            z0, z1 = (low, low + DEPTH) if i % 2 else (low + DEPTH, low)
            beam(mesh, "yellow", (x0, side, z0), (x1, side, z1), 0.06)
    for x in (JIB_FRONT, JIB_BACK, -1.0):
        for z in (low, low + DEPTH):
            beam(mesh, "yellow", (x, -GIRDER, z), (x, GIRDER, z), 0.1)
    box(mesh, "concrete", (0.6, 0.36, 0.55), (JIB_BACK + 0.7, 0, low + 0.15), bevel=0.03)
    box(mesh, "yellow", (0.45, 0.42, 0.55), (0.95, 0.9, 0.45), bevel=0.06)
    box(mesh, "glass", (0.02, 0.34, 0.32), (1.4, 0.9, 0.60), bevel=0.01)
    box(mesh, "glass", (0.34, 0.02, 0.28), (0.95, 1.32, 0.64), bevel=0.01)
    return mesh


def trolley_mesh():
    mesh = Mesh()
    for side in (-1, 1):
        box(mesh, "iron", (0.5, 0.07, 0.07), (0, side * GIRDER, 0.2), bevel=0.02)
        box(mesh, "iron", (0.06, 0.16, 0.06), (side * 0.2, 0.26, 0.18), bevel=0.01)
        box(mesh, "iron", (0.06, 0.16, 0.06), (side * 0.2, -0.26, 0.18), bevel=0.01)
    for x in (-0.16, 0.16):
        box(mesh, "signal", (0.04, 0.2, 0.14), (x, 0, 0.14), bevel=0.01)
    return mesh


def hoist_mesh():
    mesh = Mesh()
    box(mesh, "chrome", (0.07, 0.07, RAM / 2), (0, 0, RAM / 2), bevel=0.01)
    lathe(mesh, "signal", [(0, -0.12), (0.1, -0.12), (0.16, 0), (0.16, 0.1), (0, 0.1)], 20)
    return mesh


def load_mesh():
    """Its origin is at the middle of the container; the sling comes together at the hook."""
    mesh, (x, y, z) = Mesh(), LOAD
    box(mesh, "blue", LOAD, bevel=0.03)
    for i in range(-3, 4):
        for side in (-1, 1):
            box(mesh, "blue", (0.05, 0.02, z - 0.1), (i * 0.18, side * (y + 0.01), 0))
    for sx in (-1, 1):
        for sy in (-1, 1):
            beam(mesh, "iron", (sx * (x - 0.06), sy * (y - 0.06), z), (0, 0, z + SLING), 0.03)
    lathe(mesh, "signal", [(0, z + SLING - 0.08), (0.1, z + SLING - 0.08), (0.07, z + SLING + 0.05),
                           (0, z + SLING + 0.05)], 16)
    return mesh


def shape_box(half, centre):
    return (f"<translate>{' '.join(f'{x:g}' for x in centre)}</translate>"
            f"<box><half_extents>{' '.join(f'{x:g}' for x in half)}</half_extents></box>")


def bodies(document):
    document.physics_material("stone", 0.7, 0.05)
    document.physics_material("metal", 0.5, 0.05)
    document.rigid_body("ground", [shape_box((60, 60, 0.25), (0, 0, 0))], "stone")
    document.rigid_body("mast", [shape_box((1.6, 1.6, 0.25), (0, 0, 0.25)),
                                 shape_box((0.57, 0.57, TURNTABLE / 2 - 0.2), (0, 0, TURNTABLE / 2))], "stone")
    middle, half = (JIB_FRONT + JIB_BACK) / 2, (JIB_FRONT - JIB_BACK) / 2
    sides = [shape_box((half, 0.05, DEPTH / 2), (middle, side, 0.35 + DEPTH / 2)) for side in (-GIRDER, GIRDER)]
    document.rigid_body("jib", [*sides, shape_box((0.6, 0.36, 0.55), (JIB_BACK + 0.7, 0, 0.5)),
                                shape_box((0.45, 0.42, 0.55), (0.95, 0.9, 0.45))], "metal",
                        mass=2500, centre=(0.2, 0, 0.5), inertia=(900, 24000, 24000))
    document.rigid_body("trolley", [shape_box((0.5, 0.36, 0.08), (0, 0, 0.16))], "metal", mass=150,
                        inertia=(20, 20, 20))
    document.rigid_body("hoist", [shape_box((0.07, 0.07, RAM / 2), (0, 0, RAM / 2))], "metal", mass=100,
                        inertia=(30, 30, 10))
    document.rigid_body("load", [shape_box(LOAD, (0, 0, 0))], "metal", mass=300)
    document.rigid_body("crate", [shape_box((0.4, 0.4, 0.4), (0, 0, 0))], "stone", mass=25)


def crates():
    """Two pyramids within the crane's reach: name and place of each crate."""
    for heap, degrees in enumerate((55, -70)):
        angle = math.radians(degrees)
        x, y = 6.5 * math.cos(angle), 6.5 * math.sin(angle)
        count = 0
        for row, columns in enumerate((3, 2, 1)):
            for i in range(columns):
                count += 1
                yield f"crate_{heap + 1}_{count}", (x, y + (i - (columns - 1) / 2) * 0.84, 0.4 + 0.8 * row)


def model():
    document = Document("crane", "Made by scenes/generator/crane.py.")
    document.material("yellow", (0.90, 0.66, 0.08), shininess=60, specular=0.4)
    document.material("iron", (0.17, 0.18, 0.20), shininess=60, specular=0.6)
    document.material("chrome", (0.62, 0.64, 0.68), shininess=90, specular=0.8)
    document.material("signal", (0.85, 0.22, 0.10), shininess=60, specular=0.5)
    document.material("concrete", (0.62, 0.62, 0.60), specular=0)
    document.material("glass", (0.10, 0.15, 0.21), shininess=110, specular=0.9)
    document.material("blue", (0.13, 0.35, 0.60), shininess=60, specular=0.4)
    document.material("pine", (0.82, 0.64, 0.38))
    document.material("wood", (0.66, 0.46, 0.26))
    document.material("gravel", (0.52, 0.50, 0.46), specular=0)
    bodies(document)
    chains.declare(document, "iron")

    ground, crate = Mesh(), Mesh()
    box(ground, "gravel", (60, 60, 0.25))
    box(crate, "pine", (0.38, 0.38, 0.38), bevel=0.01)
    for x in (-1, 1):
        for y in (-1, 1):
            box(crate, "wood", (0.05, 0.05, 0.4), (x * 0.35, y * 0.35, 0), bevel=0.01)
            box(crate, "wood", (0.05, 0.4, 0.05), (x * 0.35, 0, y * 0.35), bevel=0.01)
            box(crate, "wood", (0.4, 0.05, 0.05), (0, x * 0.35, y * 0.35), bevel=0.01)
    meshes = {"ground": ground, "mast": mast_mesh(), "jib": jib_mesh(), "trolley": trolley_mesh(),
              "hoist": hoist_mesh(), "load": load_mesh(), "crate": crate}
    for name, mesh in meshes.items():
        document.geometry(name, mesh)

    hoist = (TROLLEY, 0, TURNTABLE - 0.25)
    placed = {"ground": (0, 0, -0.25), "mast": (0, 0, 0), "jib": (0, 0, TURNTABLE),
              "trolley": (TROLLEY, 0, TURNTABLE), "hoist": hoist}
    for name, place in placed.items():
        document.node(name, name, place)
        document.instance(name, name)
    document.constraint("slewing", "mast", (0, 0, TURNTABLE), "jib", (0, 0, 0), swing=((0, 0, -SLEW), (0, 0, SLEW)),
                        interpenetrate=True)
    document.constraint("trolley_slide", "jib", (TROLLEY, 0, 0), "trolley", (0, 0, 0),
                        linear=((REACH[0], 0, 0), (REACH[1], 0, 0)), interpenetrate=True)
    document.constraint("hoist_slide", "trolley", (0, 0, hoist[2] - TURNTABLE), "hoist", (0, 0, 0),
                        linear=((0, 0, LIFT[0]), (0, 0, LIFT[1])), interpenetrate=True)
    links, end = chains.hang(document, "link", LINKS, "hoist", (0, 0, -0.1), (hoist[0], 0, hoist[2] - 0.1))
    hook = LOAD[2] + SLING
    document.node("load", "load", (end[0], end[1], end[2] - hook))
    document.instance("load", "load")
    chains.join(document, "hook", f"#{links[-1]}", (0, 0, -chains.PITCH / 2), "load", (0, 0, hook))
    for name, place in crates():
        document.node(name, "crate", place)
        document.instance("crate", name)
    return document, links


def motors():
    return [motor("slew", "slewing", input="steer", speed=-SLEW_SPEED, force=40000),
            motor("move_trolley", "trolley_slide", input="drive", speed=TROLLEY_SPEED, force=8000),
            motor("lift_load", "hoist_slide", input="lift", speed=LIFT_SPEED, force=15000)]


if __name__ == "__main__":
    scenes = pathlib.Path(__file__).resolve().parent.parent
    document, links = model()
    document.write(scenes / "models" / "crane.dae")
    agents = {**dict.fromkeys(("ground", "mast"), FIXED),
              **dict.fromkeys(("jib", "trolley", "hoist", *links), PLAYABLE),
              **dict.fromkeys(("load", *(name for name, _ in crates())), MOVABLE)}
    write(scenes / "crane.xml", "A tower crane with a load on a chain. Made by scenes/generator/crane.py.",
          "models/crane.dae", agents, motors())
