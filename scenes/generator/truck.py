"""Makes models/truck.dae and truck.xml: a flatbed truck on sprung wheels that can be driven, a ramp and some cargo.

Each wheel turns on a hub, and each hub slides up and down the frame on a spring; the front ones steer too."""

import math
import pathlib

from agents import FIXED, MOVABLE, PLAYABLE, motor, write
from collada import Document
from meshes import Mesh, box, lathe

WHEEL_RADIUS, WHEEL_HALF_WIDTH = 0.42, 0.14
AXLES = {"front": 1.45, "rear": -1.35}
SIDES = {"left": 0.86, "right": -0.86}
RAMP = (4.0, 3, 0.8)  # length, width and height of each slope
RAMP_DECK = 1.6  # length between the slopes
CHASSIS_HEIGHT = 0.74  # the origin of the truck's body above the ground
GROUND = 200  # half of the yard

MASS, CENTRE, INERTIA = 900, (0.05, 0, -0.15), (350, 1430, 1570)
HUB_MASS, WHEEL_MASS = 30, 30
CARGO = {"crate_on_bed": (30, -0.9), "barrel_on_bed": (40, -1.8)}  # mass and place along the truck
STIFFNESS, DAMPING = 30000, 1900  # of each wheel's spring
TRAVEL = (-0.12, 0.12)
STEERING = 32  # degrees to each side
SPEED = 8 / WHEEL_RADIUS  # radians per second
BRAKES = {"front": 900, "rear": 500}


def load_on(end):
    """The mass that one wheel's spring carries."""
    rear, length = AXLES["rear"], AXLES["front"] - AXLES["rear"]
    parts = [(MASS, CENTRE[0]), *CARGO.values()]
    front = sum(mass * (x - rear) / length for mass, x in parts)
    return (front if end == "front" else sum(mass for mass, _ in parts) - front) / 2


def mudguards():
    """Flaps of the body before each wheel and behind it: half extents and places in the body's frame."""
    return [((0.02, WHEEL_HALF_WIDTH, 0.10), (x + end * 0.56, y, 0.16))
            for x in AXLES.values() for y in SIDES.values() for end in (-1, 1)]


def corners():
    """What each wheel's names end in, and where it is."""
    return [(end, side, (x, y, WHEEL_RADIUS)) for end, x in AXLES.items() for side, y in SIDES.items()]


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


def ramp_mesh():
    """Two slopes with a deck between them."""
    mesh, (length, width, height) = Mesh(), RAMP
    profile = [(0, 0), (length, height), (length + RAMP_DECK, height), (2 * length + RAMP_DECK, 0)]
    for (x0, z0), (x1, z1) in zip(profile, profile[1:]):
        corner = [mesh.vertex((x, y, z), (z0 - z1, 0, x1 - x0))
                  for x, z in ((x0, z0), (x1, z1)) for y in (-width / 2, width / 2)]
        mesh.quad("wood", corner[0], corner[2], corner[3], corner[1])
    for y in (-width / 2, width / 2):
        corner = [mesh.vertex((x, y, z), (0, y, 0)) for x, z in profile]
        mesh.quad("wood", *corner)
    return mesh


def hub_mesh(side):
    """The end of an axle that points inward, and the spring that stands on it."""
    mesh, inward = Mesh(), -math.copysign(1, side)
    lathe(mesh, "iron", [(0, 0), (0.07, 0), (0.07, 0.36), (0, 0.36)], 16, axis="y")
    if inward < 0:
        mesh.positions = [(x, -y, z) for x, y, z in mesh.positions]
        mesh.normals = [(x, -y, z) for x, y, z in mesh.normals]
        mesh.groups = {name: [(a, c, b) for a, b, c in group] for name, group in mesh.groups.items()}
    coils = [(0.05 + 0.03 * (i % 2), 0.06 + 0.028 * i) for i in range(18)]
    lathe(mesh, "chrome", [(0, 0.06), *coils, (0, 0.55)], 20, centre=(0, inward * 0.27, 0))
    return mesh


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
    document.physics_material("rubber", 0.8, 0.1)
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
        [shape_box(*flap) for flap in mudguards()], "metal", mass=MASS, centre=CENTRE, inertia=INERTIA)
    tread = (f"<cylinder><height>{2 * WHEEL_HALF_WIDTH:g}</height>"
             f"<radius>{WHEEL_RADIUS:g} {WHEEL_RADIUS:g}</radius></cylinder>")
    for end, side, (x, y, z) in corners():
        corner = f"{end}_{side}"
        steering = STEERING if end == "front" else 0
        document.rigid_body(f"hub_{corner}", ["<sphere><radius>0.08</radius></sphere>"], "metal", mass=HUB_MASS,
                            inertia=(1, 1, 1))
        document.rigid_body(f"wheel_{corner}", [tread], "rubber", mass=WHEEL_MASS)
        document.constraint(f"suspension_{corner}", "truck", (x, y, z - CHASSIS_HEIGHT), f"hub_{corner}", (0, 0, 0),
                            swing=((0, 0, -steering), (0, 0, steering)),
                            linear=((0, 0, TRAVEL[0]), (0, 0, TRAVEL[1])),
                            spring=(STIFFNESS, DAMPING, -load_on(end) * 9.81 / STIFFNESS), interpenetrate=True)
        document.constraint(f"axle_{corner}", f"hub_{corner}", (0, 0, 0), f"wheel_{corner}", (0, 0, 0),
                            swing=((0, -3600, 0), (0, 3600, 0)), interpenetrate=True)
    document.rigid_body("crate", [shape_box((0.35, 0.35, 0.35), (0, 0, 0))], "timber", mass=CARGO["crate_on_bed"][0])
    document.rigid_body("barrel", ["<cylinder><height>0.9</height><radius>0.3 0.3</radius></cylinder>"
                                   "<rotate>1 0 0 90</rotate>"], "metal",
                        mass=CARGO["barrel_on_bed"][0])
    length, width, height = RAMP
    slope, long = math.degrees(math.atan2(height, length)), math.hypot(length, height)
    planks = []
    for middle, turn in ((length / 2, -slope), (1.5 * length + RAMP_DECK, slope)):
        planks.append(f"<translate>{middle:g} 0 {height / 2:g}</translate><rotate>0 1 0 {turn:.4g}</rotate>"
                      f"<translate>0 0 -0.05</translate><box><half_extents>{long / 2:.4g} {width / 2:g} 0.05"
                      f"</half_extents></box>")
    planks.append(shape_box((RAMP_DECK / 2, width / 2, height / 2), (length + RAMP_DECK / 2, 0, height / 2)))
    document.rigid_body("ramp", planks, "timber")
    document.rigid_body("ground", ["<plane><equation>0 0 1 -0.25</equation></plane>"], "rubber")


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

    crate, barrel, ground = Mesh(), Mesh(), Mesh()
    box(crate, "pine", (0.33, 0.33, 0.33), bevel=0.01)
    for x, y in ((-1, -1), (-1, 1), (1, -1), (1, 1)):                           # the crate's frame
        box(crate, "wood", (0.05, 0.05, 0.35), (x * 0.3, y * 0.3, 0), bevel=0.01)
        box(crate, "wood", (0.05, 0.35, 0.05), (x * 0.3, 0, y * 0.3), bevel=0.01)
        box(crate, "wood", (0.35, 0.05, 0.05), (0, x * 0.3, y * 0.3), bevel=0.01)
    lathe(barrel, "blue", [(0, -0.45), (0.27, -0.45), (0.3, -0.42), (0.3, -0.18), (0.28, -0.15), (0.3, -0.12),
                           (0.3, 0.12), (0.28, 0.15), (0.3, 0.18), (0.3, 0.42), (0.27, 0.45), (0, 0.45)], 32)
    box(ground, "yard", (GROUND, GROUND, 0.25))
    for name, mesh in (("truck-body", body_mesh()), ("wheel", wheel_mesh()), ("crate", crate), ("barrel", barrel),
                       ("ramp", ramp_mesh()), ("ground", ground), ("hub_left", hub_mesh(1)), ("hub_right", hub_mesh(-1))):
        document.geometry(name, mesh)

    bodies(document)
    placed = [("ground", "ground", "ground", (0, 0, -0.25)),
              ("truck", "truck-body", "truck", (0, 0, CHASSIS_HEIGHT)),
              ("ramp", "ramp", "ramp", (4.6, 0, 0)),
              ("crate_on_bed", "crate", "crate", (CARGO["crate_on_bed"][1], 0.3, CHASSIS_HEIGHT + 0.75)),
              ("crate_low", "crate", "crate", (4.0, 2.4, 0.35)),
              ("crate_high", "crate", "crate", (4.05, 2.35, 1.06)),
              ("barrel_on_bed", "barrel", "barrel", (CARGO["barrel_on_bed"][1], -0.2, CHASSIS_HEIGHT + 0.86)),
              ("barrel_left", "barrel", "barrel", (3.2, -2.6, 0.46)),
              ("barrel_right", "barrel", "barrel", (3.95, -2.75, 0.46))]
    for end, side, place in corners():
        corner = f"{end}_{side}"
        placed += [(f"hub_{corner}", f"hub_{side}", f"hub_{corner}", place),
                   (f"wheel_{corner}", "wheel", f"wheel_{corner}", place)]
    for name, geometry, body, place in placed:
        document.node(name, geometry, place)
        document.instance(body, name)
    return document


def agents():
    names = [f"{end}_{side}" for end, side, _ in corners()]
    loose = ["truck", *CARGO, "crate_low", "crate_high", "barrel_left", "barrel_right"]
    return {"ground": FIXED, "ramp": FIXED, **dict.fromkeys(loose, MOVABLE),
            **{f"hub_{name}": FIXED for name in names}, **{f"wheel_{name}": PLAYABLE for name in names}}


def motors():
    """The rear wheels drive, the front ones steer, and all of them brake."""
    parts = []
    for end, side, _ in corners():
        corner = f"{end}_{side}"
        if end == "front":
            parts.append(motor(f"steer_{side}", f"suspension_{corner}", input="steer", axis="rotationZ",
                               mode="position", range=-math.radians(STEERING), speed=1.2, force=3000))
            parts.append(motor(f"brake_{corner}", f"axle_{corner}", hold=5, brake="brake", brakeForce=BRAKES[end]))
        else:
            parts.append(motor(f"drive_{side}", f"axle_{corner}", input="drive", speed=SPEED, force=750, hold=80,
                               brake="brake", brakeForce=BRAKES[end]))
    return parts


if __name__ == "__main__":
    scenes = pathlib.Path(__file__).resolve().parent.parent
    model().write(scenes / "models" / "truck.dae")
    write(scenes / "truck.xml", "A flatbed truck in a yard, to be driven. Made by scenes/generator/truck.py.",
          "models/truck.dae", agents(), motors())
