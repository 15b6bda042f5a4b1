#include <viewer/Daylight.h>

#include <viewer/Sky.h>

#include <osg/LightSource>
#include <osgShadow/LightSpacePerspectiveShadowMap>
#include <osgShadow/ShadowedScene>

namespace tessarin::viewer {

namespace {

const int shadowMapSize = 2048;

const char* const mainVertexShader = R"(#version 120
varying vec3 eyeNormal;
varying vec4 eyePosition;
varying vec3 worldPosition;
uniform mat4 osg_ViewMatrixInverse;
uniform vec4 subject;
void main() {
    gl_Position = ftransform();
    eyeNormal = gl_NormalMatrix * gl_Normal;
    eyePosition = gl_ModelViewMatrix * gl_Vertex;
    worldPosition = (osg_ViewMatrixInverse * eyePosition).xyz;
    gl_TexCoord[0] = gl_TextureMatrix[0] * gl_MultiTexCoord0;
    gl_FrontColor = gl_Color;
    // A little above the surface, so that it doesn't shade itself.
    vec4 above = eyePosition + vec4(normalize(eyeNormal) * subject.w * 0.006, 0.0);
    gl_TexCoord[1] = vec4(dot(above, gl_EyePlaneS[1]), dot(above, gl_EyePlaneT[1]),
                          dot(above, gl_EyePlaneR[1]), dot(above, gl_EyePlaneQ[1]));
}
)";

const char* const mainFragmentShader = R"(#version 120
varying vec3 eyeNormal;
varying vec4 eyePosition;
varying vec3 worldPosition;
uniform mat4 osg_ViewMatrix;
uniform sampler2D baseTexture;
uniform vec3 horizonColour;
uniform vec3 upward;
uniform vec4 subject;
uniform vec4 highlight;
uniform vec4 flash;
float DynamicShadow();
void main() {
    vec3 normal = normalize(gl_FrontFacing ? eyeNormal : -eyeNormal);
    vec3 toSun = normalize(gl_LightSource[0].position.xyz);
    vec3 up = normalize(mat3(osg_ViewMatrix) * upward);
    vec3 toEye = normalize(-eyePosition.xyz);

    vec4 texel = texture2D(baseTexture, gl_TexCoord[0].xy);
    vec3 diffuse = gl_Color.rgb * texel.rgb; // the material's, or that of the vertices
    float lit = max(dot(normal, toSun), 0.0);
    float shine = pow(max(dot(normal, normalize(toSun + toEye)), 0.0), max(gl_FrontMaterial.shininess, 1.0));
    vec3 sky = mix(vec3(0.24, 0.23, 0.22), vec3(0.42, 0.47, 0.56), 0.5 + 0.5 * dot(normal, up));
    vec3 sun = (diffuse * lit * 0.78 + gl_FrontMaterial.specular.rgb * shine * step(0.0, dot(normal, toSun)) * 0.5) *
               vec3(1.0, 0.96, 0.88);

    vec3 colour = diffuse * sky + sun * (lit > 0.0 ? DynamicShadow() : 0.0) + gl_FrontMaterial.emission.rgb;
    colour = mix(colour, highlight.rgb, highlight.a);
    colour = mix(colour, flash.rgb, flash.a);
    float far = smoothstep(2.5, 6.0, distance(worldPosition, subject.xyz) / subject.w);
    gl_FragColor = vec4(mix(colour, horizonColour, far), gl_Color.a * texel.a);
}
)";

// Each look-up already blends four comparisons; four of them around the place soften the shadow's edge.
const char* const shadowFragmentShader = R"(#version 120
uniform sampler2DShadow shadowTexture;
uniform float shadowTexel;
float DynamicShadow() {
    vec4 place = gl_TexCoord[1];
    float lit = 0.0;
    for (float y = -0.75; y < 1.0; y += 1.5)
        for (float x = -0.75; x < 1.0; x += 1.5)
            lit += shadow2DProj(shadowTexture, place + vec4(x, y, 0.0, 0.0) * shadowTexel * place.w).r;
    return lit / 4.0;
}
)";

osg::ref_ptr<osg::LightSource> makeSun() {
    const osg::ref_ptr<osg::LightSource> sun = new osg::LightSource;
    osg::Light& light = *sun->getLight();
    light.setLightNum(0);
    light.setDiffuse(osg::Vec4(1, 1, 1, 1));
    light.setAmbient(osg::Vec4(0, 0, 0, 1));
    light.setSpecular(osg::Vec4(1, 1, 1, 1));
    return sun;
}

} // namespace

Daylight::Daylight() {
    const osg::ref_ptr<osgShadow::LightSpacePerspectiveShadowMapCB> technique =
        new osgShadow::LightSpacePerspectiveShadowMapCB;
    technique->setTextureSize(osg::Vec2s(shadowMapSize, shadowMapSize));
    technique->setMinLightMargin(10);
    technique->setBaseTextureUnit(0);
    technique->setBaseTextureCoordIndex(0);
    technique->setShadowTextureUnit(1);
    technique->setShadowTextureCoordIndex(1);
    technique->setMainVertexShader(new osg::Shader(osg::Shader::VERTEX, mainVertexShader));
    technique->setMainFragmentShader(new osg::Shader(osg::Shader::FRAGMENT, mainFragmentShader));
    technique->setShadowFragmentShader(new osg::Shader(osg::Shader::FRAGMENT, shadowFragmentShader));

    const osg::ref_ptr<osg::LightSource> source = makeSun();
    sun = source->getLight();
    technique->setLight(sun);
    group = new osgShadow::ShadowedScene(technique);
    group->addChild(source);
    osg::StateSet& state = *group->getOrCreateStateSet();
    state.setMode(GL_NORMALIZE, osg::StateAttribute::ON);
    state.addUniform(new osg::Uniform("shadowTexel", 1.0f / float(shadowMapSize)));
    state.addUniform(new osg::Uniform("horizonColour", horizonColour));
    state.addUniform(new osg::Uniform("highlight", osg::Vec4(0, 0, 0, 0))); // see Glow
    state.addUniform(new osg::Uniform("flash", osg::Vec4(0, 0, 0, 0)));
    setStandpoint(standBefore(osg::BoundingBoxd(), {1, 1}));
}

void Daylight::setStandpoint(const Standpoint& place) {
    osg::Vec3d left = (place.centre - place.eye) ^ place.up;
    left.normalize();
    left = -left;
    const osg::Vec3d towardsEye = place.up ^ left;
    sun->setPosition(osg::Vec4d(left * 0.79 + towardsEye * 0.68 + place.up * 1.1, 0)); // far away
    group->getOrCreateStateSet()
        ->getOrCreateUniform("subject", osg::Uniform::FLOAT_VEC4)
        ->set(osg::Vec4(osg::Vec4d(place.centre, place.radius)));
}

} // namespace tessarin::viewer
