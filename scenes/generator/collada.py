"""Writes COLLADA 1.4.1 files of the kind that the sample scenes need, laid out for reading."""


def numbers(values):
    return " ".join("%g" % (round(v, 4) + 0.0) for v in values)


def wrapped(values, per_line, indent):
    lines = [numbers(values[i:i + per_line]) for i in range(0, len(values), per_line)]
    return ("\n" + " " * indent).join(lines)


LOCKED = ((0, 0, 0), (0, 0, 0))


class Document:
    def __init__(self, title, comment):
        self.title, self.comment = title, comment
        self.effects, self.materials, self.geometries, self.nodes = [], [], [], []
        self.physics_materials, self.rigid_bodies, self.constraints = [], [], []
        self.instances, self.constraint_instances = [], []
        self.used_materials = {}

    def material(self, name, colour, shininess=20, specular=0.2):
        """`colour` is the diffuse colour; the ambient one is the same."""
        def rgba(tag, rgb):
            return f"<{tag}><color>{numbers(rgb)} 1</color></{tag}>"
        self.effects.append(f"""    <effect id="{name}-effect">
      <profile_COMMON>
        <technique sid="common">
          <phong>
            {rgba("ambient", colour)}
            {rgba("diffuse", colour)}
            {rgba("specular", [specular] * 3)}
            <shininess><float>{shininess:g}</float></shininess>
          </phong>
        </technique>
      </profile_COMMON>
    </effect>""")
        self.materials.append(f'    <material id="{name}" name="{name}"><instance_effect url="#{name}-effect"/></material>')

    def geometry(self, name, mesh):
        """Material symbols are slots: the node that instances the geometry binds them."""
        self.used_materials[name] = list(mesh.groups)
        count = len(mesh.positions)

        def source(kind, rows):
            values = [x for row in rows for x in row]
            return f"""        <source id="{name}-{kind}">
          <float_array id="{name}-{kind}-array" count="{3 * count}">
            {wrapped(values, 24, 12)}
          </float_array>
          <technique_common>
            <accessor source="#{name}-{kind}-array" count="{count}" stride="3">
              <param name="X" type="float"/><param name="Y" type="float"/><param name="Z" type="float"/>
            </accessor>
          </technique_common>
        </source>"""
        triangles = "\n".join(f"""        <triangles material="{material}" count="{len(group)}">
          <input semantic="VERTEX" source="#{name}-vertices" offset="0"/>
          <p>
            {wrapped([i for t in group for i in t], 48, 12)}
          </p>
        </triangles>""" for material, group in mesh.groups.items())
        self.geometries.append(f"""    <geometry id="{name}" name="{name}">
      <mesh>
{source("positions", mesh.positions)}
{source("normals", mesh.normals)}
        <vertices id="{name}-vertices">
          <input semantic="POSITION" source="#{name}-positions"/>
          <input semantic="NORMAL" source="#{name}-normals"/>
        </vertices>
{triangles}
      </mesh>
    </geometry>""")

    def node(self, name, geometry, translate=(0, 0, 0), rotate_z=0, bind=None, rotate=None):
        """`rotate` is an axis and degrees about it. `bind` maps the geometry's slots to materials; a slot that it leaves
        out is the material of that name."""
        bind = bind or {}
        instances = "".join(f'<instance_material symbol="{slot}" target="#{bind.get(slot, slot)}"/>'
                            for slot in self.used_materials[geometry])
        rotate = rotate or (0, 0, 1, rotate_z)
        turn = f"<rotate>{numbers(rotate)}</rotate>" if rotate[3] else ""
        self.nodes.append(f"""      <node id="{name}" name="{name}">
        <translate>{numbers(translate)}</translate>{turn}
        <instance_geometry url="#{geometry}">
          <bind_material><technique_common>{instances}</technique_common></bind_material>
        </instance_geometry>
      </node>""")

    def physics_material(self, name, friction, restitution):
        self.physics_materials.append(f"""    <physics_material id="{name}">
      <technique_common>
        <dynamic_friction>{friction:g}</dynamic_friction>
        <restitution>{restitution:g}</restitution>
        <static_friction>{friction:g}</static_friction>
      </technique_common>
    </physics_material>""")

    def rigid_body(self, sid, shapes, material, mass=None, centre=None, inertia=None):
        """A body without mass is static. `shapes` are the insides of `shape` elements; `centre` is that of mass."""
        frame = f"<mass_frame><translate>{numbers(centre)}</translate></mass_frame>" if centre else ""
        moments = f"<inertia>{numbers(inertia)}</inertia>" if inertia else ""
        masses = f"\n          {frame}{moments}" if frame or moments else ""
        dynamic = f"<dynamic>true</dynamic>\n          <mass>{mass:g}</mass>" if mass else "<dynamic>false</dynamic>"
        inside = "\n".join(f"          <shape>{shape}</shape>" for shape in shapes)
        self.rigid_bodies.append(f"""      <rigid_body sid="{sid}" name="{sid}">
        <technique_common>
          {dynamic}{masses}
          <instance_physics_material url="#{material}"/>
{inside}
        </technique_common>
      </rigid_body>""")

    def constraint(self, sid, reference, reference_at, body, body_at, swing=LOCKED, linear=LOCKED, spring=None,
                   interpenetrate=False):
        """A joint of two bodies, or of a body and the world where `reference` is None: `reference_at` is in the world
        then. Limits are pairs of lower and upper ends, in degrees and metres. `spring` is one for the linear axes that
        may move: stiffness, damping and target."""
        def limits(tag, pair):
            return "<%s><min>%s</min><max>%s</max></%s>" % (
                tag, *(numbers(row) for row in pair), tag)
        first = f' rigid_body="{reference}"' if reference else ""
        springs = ""
        if spring:
            stiffness, damping, target = spring
            springs = (f"\n          <spring><linear><stiffness>{stiffness:g}</stiffness><damping>{damping:g}</damping>"
                       f"<target_value>{target:.5g}</target_value></linear></spring>")
        self.constraints.append(f"""      <rigid_constraint sid="{sid}" name="{sid}">
        <ref_attachment{first}><translate>{numbers(reference_at)}</translate></ref_attachment>
        <attachment rigid_body="{body}"><translate>{numbers(body_at)}</translate></attachment>
        <technique_common>
          <enabled>true</enabled>
          <interpenetrate>{"true" if interpenetrate else "false"}</interpenetrate>
          <limits>{limits("swing_cone_and_twist", swing)}{limits("linear", linear)}</limits>{springs}
        </technique_common>
      </rigid_constraint>""")
        self.constraint_instances.append(f'        <instance_rigid_constraint constraint="{sid}"/>')

    def instance(self, body, target, velocity=None):
        head = f'        <instance_rigid_body body="{body}" target="#{target}"'
        if velocity is None:
            self.instances.append(head + "/>")
        else:
            self.instances.append(f"""{head}>
          <technique_common><velocity>{numbers(velocity)}</velocity></technique_common>
        </instance_rigid_body>""")

    def write(self, path):
        def library(tag, entries):
            return f"  <{tag}>\n" + "\n".join(entries) + f"\n  </{tag}>\n" if entries else ""
        physics = scene = ""
        if self.rigid_bodies:
            model = [f'    <physics_model id="{self.title}-bodies">'] + self.rigid_bodies + self.constraints + [
                "    </physics_model>"]
            world = [f'    <physics_scene id="{self.title}-world">',
                     f'      <instance_physics_model url="#{self.title}-bodies">'] + self.instances + \
                self.constraint_instances + [
                     "      </instance_physics_model>",
                     "      <technique_common><gravity>0 0 -9.81</gravity></technique_common>",
                     "    </physics_scene>"]
            physics = library("library_physics_materials", self.physics_materials) + \
                library("library_physics_models", model) + library("library_physics_scenes", world)
            scene = f'    <instance_physics_scene url="#{self.title}-world"/>\n'
        visual = [f'    <visual_scene id="{self.title}">'] + self.nodes + ["    </visual_scene>"]
        with open(path, "w", encoding="utf-8", newline="\n") as out:
            out.write(f"""<?xml version="1.0" encoding="utf-8"?>
<!-- {self.comment} -->
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
  <asset>
    <created>2026-01-01T00:00:00Z</created>
    <modified>2026-01-01T00:00:00Z</modified>
    <unit name="meter" meter="1"/>
    <up_axis>Z_UP</up_axis>
  </asset>
{library("library_effects", self.effects)}{library("library_materials", self.materials)}\
{library("library_geometries", self.geometries)}{library("library_visual_scenes", visual)}{physics}  <scene>
{scene}    <instance_visual_scene url="#{self.title}"/>
  </scene>
</COLLADA>
""")
