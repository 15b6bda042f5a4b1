"""The agents of a scene's bodies, as they stand in its document: they come with the model's bodies, and the document
gives each the node that bears its name, and whatever makes it act."""

# A body that stays where it is, one that a person can play with, and one that is also seen to be hit.
FIXED = ("GeometryComponent",)
PLAYABLE = (*FIXED, "HighlightComponent", "DragComponent", "PushComponent")
MOVABLE = (*PLAYABLE, "FlashComponent")


def component(class_name, name, fields, indent):
    head = f'{indent}<Component class="{class_name}" name="{name}"'
    if not fields:
        return head + "/>\n"
    lines = "".join(f'{indent}  <field name="{key}" value="{value if isinstance(value, str) else f"{value:g}"}"/>\n'
                    for key, value in fields.items())
    return f"{head}>\n{lines}{indent}</Component>\n"


def motor(name, joint, **fields):
    """A component that drives a joint by a virtual input; see viewer/components/MotorBehaviour.h for its fields."""
    return component("MotorBehaviour", name, {"joint": joint, **fields}, "  ")


def agent(name, classes):
    """An agent with a component of each class, each under the name of its class."""
    components = "".join(component(each, each, {}, "    ") for each in classes)
    return f'  <AgentNode name="{name}">\n{components}  </AgentNode>\n'


def write(path, comment, model, agents, motors=()):
    """`agents` maps names to classes. The motors are on the agent that holds the model, as its joints are."""
    loader = component("VisualModelComponent", "VisualModelComponent", {"filePath": model}, "  ")
    children = "".join(agent(name, classes) for name, classes in agents.items())
    path.write_text(f"""<?xml version="1.0" encoding="utf-8"?>
<!-- {comment} -->
<AgentNode name="{path.stem}_scene">
{loader}{"".join(motors)}{children}</AgentNode>
""", encoding="utf-8", newline="\n")
