"""Makes models/tower.dae and tower.xml: a round tower of bricks, and a ball that is on its way."""

import math
import pathlib
import random

from agents import FIXED, MOVABLE, write
from collada import Document
from meshes import Mesh, box, sphere

COURSES, BRICKS, RADIUS = 9, 12, 1.15
BRICK = (0.262, 0.15, 0.125)  # half extents: along the wall, through it, up
BALL = 0.5  # radius
WALL = (0.2, 2.6, 0.35)  # half extents; it keeps the ball in the picture
STONES = ["sandstone", "limestone", "terracotta", "ochre"]


def bricks():
    """Name, place and turn of each brick, course by course, in running bond, with merlons on top."""
    for course in range(COURSES + 1):
        for i in range(BRICKS):
            if course == COURSES and i % 2:
                continue
            angle = 360 / BRICKS * (i + 0.5 * (course % 2))
            x, y = (RADIUS * f(math.radians(angle)) for f in (math.cos, math.sin))
            z = BRICK[2] + course * 2 * BRICK[2]
            yield f"brick_{course + 1}_{i + 1}", (x, y, z), angle + 90


def model():
    document = Document("tower", "Made by scenes/generator/tower.py.")
    document.material("sandstone", (0.82, 0.66, 0.45))
    document.material("limestone", (0.87, 0.79, 0.66))
    document.material("terracotta", (0.74, 0.40, 0.27))
    document.material("ochre", (0.78, 0.56, 0.30))
    document.material("grass", (0.42, 0.54, 0.34), specular=0)
    document.material("steel", (0.16, 0.19, 0.26), shininess=80, specular=0.9)
    document.material("signal", (0.93, 0.43, 0.10), shininess=80, specular=0.6)

    brick, ball, wall, ground = Mesh(), Mesh(), Mesh(), Mesh()
    box(brick, "stone", BRICK, bevel=0.02)
    sphere(ball, ["steel", "signal"], BALL)
    box(wall, "limestone", WALL, bevel=0.05)
    box(ground, "grass", (30, 30, 0.25))
    for name, mesh in (("brick", brick), ("ball", ball), ("wall", wall), ("ground", ground)):
        document.geometry(name, mesh)

    document.physics_material("stone", 0.7, 0.05)
    document.physics_material("iron", 0.4, 0.2)
    document.rigid_body("brick", [f"<box><half_extents>{BRICK[0]} {BRICK[1]} {BRICK[2]}</half_extents></box>"],
                        "stone", mass=4)
    document.rigid_body("ball", [f"<sphere><radius>{BALL}</radius></sphere>"], "iron", mass=200)
    document.rigid_body("wall", [f"<box><half_extents>{WALL[0]} {WALL[1]} {WALL[2]}</half_extents></box>"], "stone")
    document.rigid_body("ground", ["<box><half_extents>30 30 0.25</half_extents></box>"], "stone")

    document.node("ground", "ground", (0, 0, -0.25))
    document.instance("ground", "ground")
    document.node("wall", "wall", (3.8, 0, WALL[2]))
    document.instance("wall", "wall")
    document.node("ball", "ball", (-2.9, 0.3, 1.3))
    document.instance("ball", "ball", velocity=(10, -0.7, 1.2))
    stones = random.Random(7)
    for name, place, turn in bricks():
        document.node(name, "brick", place, rotate_z=turn, bind={"stone": stones.choice(STONES)})
        document.instance("brick", name)
    return document


def agents():
    loose = ["ball", *(name for name, _, _ in bricks())]
    return {"ground": FIXED, "wall": FIXED, **dict.fromkeys(loose, MOVABLE)}


if __name__ == "__main__":
    scenes = pathlib.Path(__file__).resolve().parent.parent
    model().write(scenes / "models" / "tower.dae")
    write(scenes / "tower.xml", "A tower of bricks that is knocked over by a ball. Made by scenes/generator/tower.py.",
          "models/tower.dae", agents())
