"""Makes models/truck.dae: a flatbed truck whose body and wheels are bodies of their own, a ramp and some cargo."""

import math
import pathlib

from collada import Document
from meshes import Mesh, box, lathe

WHEEL_RADIUS, WHEEL_HALF_WIDTH = 0.45, 0.16
AXLES = {"front": 1.45, "rear": -1.35}
SIDES = {"left": 0.86, "right": -0.86}
RAMP = (4.4, 3, 1)  # length, width, height at the far end
CHASSIS_HEIGHT = 0.68  # the origin of the truck's body above the ground


def mudguards():
    """Flaps of the body in front of each wheel and behind it, with a gap: half extents and places in the body's frame."""
    return [((0.02, WHEEL_HALF_WIDTH, 0.12), (x + end * 0.43, y, 0.14))
            for x in AXLES.values() for y in SIDES.values() for end in (-1, 1)]


def wheels():
    return [(f"wheel_{end}_{side}", (x, y, WHEEL_RADIUS)) for end, x in AXLES.items() for side, y in SIDES.items()]


def body_mesh():
    mesh = Mesh()
    box(mesh, "iron", (2.1, 0.45, 0.14), bevel=0.02)                            # frame
    box(mesh, "red", (0.95, 0.97, 0.07), (1.35, 0, 0.32), bevel=0.03)           # wings
    box(mesh, "red", (0.62, 0.92, 0.30), (1.62, 0, 0.62), bevel=0.07)           # bonnet
    box(mesh, "red", (0.62, 0.95, 0.62), (0.58, 0, 0.98), bevel=0.09)           # cabin
    box(mesh, "glass", (0.02, 0.78, 0.24), (1.19, 0, 1.22), bevel=0.01)         # windscreen
    box(mesh, "glass", (0.36, 0.02, 0.22), (0.60, 0.945, 1.22), bevel=0.01)     # side windows
    box(mesh, "glass", (0.36, 0.02, 0.22), (0.60, -0.945, 1.22), bevel=0.01)
    box(mesh, "iron", (0.02, 0.55, 0.17), (2.235, 0, 0.60), bevel=0.01)         # grille
    box(mesh, "iron", (0.07, 0.98, 0.09), (2.30, 0, 0.20), bevel=0.03)          # bumper
    for half, place in mudguards():
        box(mesh, "iron", half, place, bevel=0.01)
    for side in (-1, 1):
        lamp = [(0, 0), (0.13, 0), (0.13, 0.05), (0, 0.07)]
        turned = Mesh()
        lathe(turned, "lamp", lamp, 20)
        offset = len(mesh.positions)                                            # headlamps look along +X
        mesh.positions += [(z + 2.22, y + side * 0.73, x + 0.62) for x, y, z in turned.positions]
        mesh.normals += [(z, y, x) for x, y, z in turned.normals]
        mesh.groups.setdefault("lamp", []).extend(
            (a + offset, c + offset, b + offset) for a, b, c in turned.groups["lamp"])
    box(mesh, "wood", (1.18, 0.99, 0.06), (-1.22, 0, 0.33), bevel=0.02)         # bed
    for side in (-1, 1):
        box(mesh, "wood", (1.18, 0.04, 0.16), (-1.22, side * 0.95, 0.54), bevel=0.02)
    box(mesh, "wood", (0.04, 0.91, 0.16), (-2.36, 0, 0.54), bevel=0.02)
    return mesh


def wedge(mesh, material, size):
    length, width, height = size
    left, right = ([(0, y, 0), (length, y, 0), (length, y, height)] for y in (width / 2, -width / 2))
    faces = [((0, 1, 0), left), ((0, -1, 0), right), ((0, 0, -1), [left[0], left[1], right[1], right[0]]),
             ((1, 0, 0), [left[1], left[2], right[2], right[1]]),
             ((-height, 0, length), [left[0], left[2], right[2], right[0]])]
    for normal, corners in faces:
        vertices = [mesh.vertex(corner, normal) for corner in corners]
        for b, c in zip(vertices[1:], vertices[2:]):
            mesh.triangle(material, vertices[0], b, c)


def wheel_mesh():
    mesh, r, w = Mesh(), WHEEL_RADIUS, WHEEL_HALF_WIDTH
    tyre = [(0.26, -w), (r - 0.05, -w), (r, -w + 0.05), (r, w - 0.05), (r - 0.05, w), (0.26, w)]
    rim = [(0.27, -w + 0.04), (0.22, -w + 0.02), (0.08, -w + 0.09), (0.0, -w + 0.09)]
    lathe(mesh, "rubber", tyre, 32, axis="y")
    lathe(mesh, "chrome", rim[::-1], 32, axis="y")
    lathe(mesh, "chrome", [(radius, -height) for radius, height in rim], 32, axis="y")
    for side in (-1, 1):
        for x, z in ((0.15, 0), (-0.15, 0), (0, 0.15), (0, -0.15)):
            box(mesh, "iron", (0.03, 0.02, 0.03), (x, side * (w - 0.05), z), bevel=0.01)
    return mesh


def bodies(document):
    document.physics_material("rubber", 0.9, 0.1)
    document.physics_material("metal", 0.5, 0.1)
    document.physics_material("timber", 0.6, 0.1)

    def shape_box(half, centre):
        return (f"<box><half_extents>{' '.join(map(str, half))}</half_extents></box>"
                f"<translate>{' '.join(map(str, centre))}</translate>")
    document.rigid_body("truck", [
        shape_box((2.1, 0.45, 0.14), (0, 0, 0)),
        shape_box((0.95, 0.97, 0.07), (1.35, 0, 0.32)),
        shape_box((0.62, 0.92, 0.3), (1.62, 0, 0.62)),
        shape_box((0.62, 0.95, 0.62), (0.58, 0, 0.98)),
        shape_box((1.18, 0.99, 0.06), (-1.22, 0, 0.33)),
        shape_box((1.18, 0.04, 0.16), (-1.22, 0.95, 0.54)),
        shape_box((1.18, 0.04, 0.16), (-1.22, -0.95, 0.54)),
        shape_box((0.04, 0.91, 0.16), (-2.36, 0, 0.54))] +
        [shape_box(*flap) for flap in mudguards()], "metal", mass=900)
    tread = (f"<cylinder><height>{2 * WHEEL_HALF_WIDTH:g}</height>"
             f"<radius>{WHEEL_RADIUS:g} {WHEEL_RADIUS:g}</radius></cylinder>")
    for name, (x, y, z) in wheels():
        wheel = name
        document.rigid_body(wheel, [tread], "rubber", mass=40)
        document.constraint(f"axle_{wheel[6:]}", "truck", (x, y, z - CHASSIS_HEIGHT), wheel, (0, 0, 0),
                            swing=((0, -3600, 0), (0, 3600, 0)))
    document.rigid_body("crate", [shape_box((0.35, 0.35, 0.35), (0, 0, 0))], "timber", mass=30)
    document.rigid_body("barrel", ["<cylinder><height>0.9</height><radius>0.3 0.3</radius></cylinder>"
                                   "<rotate>1 0 0 90</rotate>"], "metal", mass=40)
    slope = math.degrees(math.atan2(RAMP[2], RAMP[0]))
    document.rigid_body("ramp", [f"<translate>{RAMP[0] / 2} 0 {RAMP[2] / 2}</translate><rotate>0 1 0 {-slope:.4g}</rotate>"
                                 f"<translate>0 0 -0.05</translate><box><half_extents>"
                                 f"{math.hypot(RAMP[0], RAMP[2]) / 2:.4g} {RAMP[1] / 2} 0.05</half_extents></box>"], "timber")
    document.rigid_body("ground", [shape_box((40, 40, 0.25), (0, 0, 0))], "rubber")


def model():
    document = Document("truck-yard", "Made by scenes/generator/truck.py.")
    document.material("red", (0.72, 0.10, 0.09), shininess=90, specular=0.7)
    document.material("iron", (0.17, 0.18, 0.20), shininess=40, specular=0.4)
    document.material("chrome", (0.62, 0.64, 0.68), shininess=90, specular=0.8)
    document.material("glass", (0.10, 0.15, 0.21), shininess=110, specular=0.9)
    document.material("lamp", (0.98, 0.93, 0.72), shininess=90, specular=0.8)
    document.material("rubber", (0.07, 0.07, 0.08), specular=0.1)
    document.material("wood", (0.66, 0.46, 0.26))
    document.material("pine", (0.82, 0.64, 0.38))
    document.material("blue", (0.13, 0.35, 0.60), shininess=60, specular=0.5)
    document.material("yard", (0.55, 0.55, 0.54), specular=0)

    crate, barrel, ramp, ground = Mesh(), Mesh(), Mesh(), Mesh()
    box(crate, "pine", (0.33, 0.33, 0.33), bevel=0.01)
    for x, y in ((-1, -1), (-1, 1), (1, -1), (1, 1)):                           # the crate's frame
        box(crate, "wood", (0.05, 0.05, 0.35), (x * 0.3, y * 0.3, 0), bevel=0.01)
        box(crate, "wood", (0.05, 0.35, 0.05), (x * 0.3, 0, y * 0.3), bevel=0.01)
        box(crate, "wood", (0.35, 0.05, 0.05), (0, x * 0.3, y * 0.3), bevel=0.01)
    lathe(barrel, "blue", [(0, -0.45), (0.27, -0.45), (0.3, -0.42), (0.3, -0.18), (0.28, -0.15), (0.3, -0.12),
                           (0.3, 0.12), (0.28, 0.15), (0.3, 0.18), (0.3, 0.42), (0.27, 0.45), (0, 0.45)], 32)
    wedge(ramp, "wood", RAMP)
    box(ground, "yard", (40, 40, 0.25))
    for name, mesh in (("truck-body", body_mesh()), ("wheel", wheel_mesh()), ("crate", crate), ("barrel", barrel),
                       ("ramp", ramp), ("ground", ground)):
        document.geometry(name, mesh)

    bodies(document)
    placed = [("ground", "ground", "ground", (0, 0, -0.25)),
              ("truck", "truck-body", "truck", (0, 0, CHASSIS_HEIGHT)),
              ("ramp", "ramp", "ramp", (4.6, 0, 0)),
              ("crate_on_bed", "crate", "crate", (-0.9, 0.3, CHASSIS_HEIGHT + 0.75)),
              ("crate_low", "crate", "crate", (4.0, 2.4, 0.35)),
              ("crate_high", "crate", "crate", (4.05, 2.35, 1.06)),
              ("barrel_on_bed", "barrel", "barrel", (-1.8, -0.2, CHASSIS_HEIGHT + 0.86)),
              ("barrel_left", "barrel", "barrel", (3.2, -2.6, 0.46)),
              ("barrel_right", "barrel", "barrel", (3.95, -2.75, 0.46))]
    placed += [(name, "wheel", name, place) for name, place in wheels()]
    for name, geometry, body, place in placed:
        document.node(name, geometry, place)
        document.instance(body, name)
    return document


if __name__ == "__main__":
    model().write(pathlib.Path(__file__).resolve().parent.parent / "models" / "truck.dae")
