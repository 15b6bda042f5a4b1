"""Chains of links, each a body of its own, joined by D6 joints."""

from meshes import Mesh, link

PITCH = 0.4  # from joint to joint
MASS = 12
BEND, TWIST = 70, 30  # degrees from link to link


def declare(document, material):
    """The geometries and the body that all links share."""
    for flat in "xy":
        mesh = Mesh()
        link(mesh, material, PITCH + 0.03, 0.13, 0.03, flat=flat)
        document.geometry(f"link_{flat}", mesh)
    document.rigid_body("link", [f"<box><half_extents>0.05 0.05 {PITCH / 2 - 0.03:g}</half_extents></box>"], "metal",
                        mass=MASS, inertia=(0.16, 0.16, 0.08))


def hang(document, prefix, count, holder, held_at, place, direction=(0, 0, -1), turn=0):
    """Adds `count` links that begin at a point of the holder, which is at `place` in the world. `turn` about Y, in
    degrees, is what makes -Z the direction. Gives the names of the links and the place of the end."""
    names = []
    for i in range(count):
        name = f"{prefix}_{i + 1}"
        middle = [p + (i + 0.5) * PITCH * d for p, d in zip(place, direction)]
        document.node(name, f"link_{'xy'[i % 2]}", middle, rotate=(0, 1, 0, turn))
        document.instance("link", name)
        join(document, f"{name}_joint", holder, held_at, f"#{name}", (0, 0, PITCH / 2))
        holder, held_at = f"#{name}", (0, 0, -PITCH / 2)
        names.append(name)
    return names, [p + count * PITCH * d for p, d in zip(place, direction)]


def join(document, sid, holder, held_at, body, body_at):
    document.constraint(sid, holder, held_at, body, body_at,
                        swing=((-BEND, -BEND, -TWIST), (BEND, BEND, TWIST)), interpenetrate=True)
