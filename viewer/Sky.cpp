#include <viewer/Sky.h>

#include <osg/Depth>
#include <osg/Geometry>
#include <osg/PolygonMode>
#include <osg/Program>
#include <osg/Shape>
#include <osg/ShapeDrawable>
#include <osg/Uniform>

namespace tessarin::viewer {

namespace {

// The ball around the eye is drawn at the far plane, however large it is.
const char* const vertexShader = R"(#version 120
varying vec3 direction;
void main() {
    direction = gl_Vertex.xyz;
    vec4 position = gl_ProjectionMatrix * vec4(mat3(gl_ModelViewMatrix) * gl_Vertex.xyz, 1.0);
    gl_Position = position.xyww;
}
)";

const char* const fragmentShader = R"(#version 120
uniform vec3 horizonColour;
uniform vec3 upward;
varying vec3 direction;
void main() {
    float up = dot(normalize(direction), upward);
    vec3 blue = vec3(0.33, 0.54, 0.80);
    gl_FragColor = vec4(mix(horizonColour, blue, smoothstep(0.0, 0.5, up)), 1.0);
}
)";

class NoBound : public osg::Drawable::ComputeBoundingBoxCallback {
public:
    osg::BoundingBox computeBound(const osg::Drawable&) const override { return osg::BoundingBox(); }
};

class NoSphere : public osg::Node::ComputeBoundingSphereCallback {
public:
    osg::BoundingSphere computeBound(const osg::Node&) const override { return osg::BoundingSphere(); }
};

} // namespace

osg::ref_ptr<osg::Node> makeSky() {
    const osg::ref_ptr<osg::ShapeDrawable> ball = new osg::ShapeDrawable;
    ball->setShape(new osg::Sphere(osg::Vec3(), 1));
    ball->setComputeBoundingBoxCallback(new NoBound);
    ball->setComputeBoundingSphereCallback(new NoSphere);
    ball->setCullingActive(false);

    const osg::ref_ptr<osg::Program> program = new osg::Program;
    program->addShader(new osg::Shader(osg::Shader::VERTEX, vertexShader));
    program->addShader(new osg::Shader(osg::Shader::FRAGMENT, fragmentShader));

    osg::StateSet& state = *ball->getOrCreateStateSet();
    state.setAttributeAndModes(program);
    state.addUniform(new osg::Uniform("horizonColour", horizonColour));
    state.setAttributeAndModes(new osg::Depth(osg::Depth::LEQUAL, 0, 1, false));
    state.setMode(GL_CULL_FACE, osg::StateAttribute::OFF);
    // The sky stays whole in a picture of wires.
    state.setAttributeAndModes(new osg::PolygonMode, osg::StateAttribute::ON | osg::StateAttribute::PROTECTED);
    state.setRenderBinDetails(-100, "RenderBin");
    return ball;
}

} // namespace tessarin::viewer
