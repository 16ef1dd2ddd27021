#!/usr/bin/env python3
"""Checks that a build of the library exports its interface and nothing else, and
that it calls itself without the dynamic linker.

usage: exports_test.py LIBRARY SOURCE_DIR [NM]
"""
import re
import subprocess
import sys

# Members by class, without the GL and EGL operations; a class's own name stands
# for its constructors and its destructor.
CLASSES = {
    'Impl': 'Impl setTargetTexResolution reset getGLDriverImpl setGLDriverImpl getEGLPlatformImpl',
    'DefaultImplV2': 'DefaultImplV2',
    'PUBGMHDImpl': 'PUBGMHDImpl reset glDrawElements eglSwapBuffersWithDamageKHR',
    'GenshinImpactImpl': 'GenshinImpactImpl reset setTargetTexResolution glTexStorage2D glViewport',
    'SGAMEImpl': '''SGAMEImpl reset eglMakeCurrent eglSwapBuffers glBindFramebuffer glViewport
        glScissor glBindTexture glShaderSource glDeleteFramebuffers glDeleteTextures
        checkIfEnableFunc renderTextureToFbo renderfboTodisplay Fbosetup releaseResourcesAll
        checkIfHdrFbo createHdrFbo releaseHdrFbo FboEnableVRS FboDisableVRS''',
    'FboBase': '''FboBase Fbosetup createFBO createFbogMultisampleEXT releaseFBO
        releaseResourcesAll loadShader createProgram setupGraphics queryGlFunctions FboEnableVRS
        FboDisableVRS collectParametersState reinstallParametersState renderTextureToFbo
        renderfboTodisplay''',
    'ImplFactory': 'ImplFactory getImpl sgameImpl genshinImpactImpl pubgmhdImpl defaultImplV2',
    'ContextManager': '''validateTLSKey getCurrentContext getNullContext bindAHookContext
        enableHooking disableHooking reset getGameType isMainRenderringThread getGameConfig
        parseGameConfig sKey sOnceKey hookingEnabled inited gameList nullContext sgameContext
        pubgmhdContext genshinImpactContext TlsKeyInitializer::create''',
    'HookContext': '''HookContext isCurrentThreadNeedToHook setImpl getImpl initImpl startMonitor
        setmainRenderringThreadId getmainRenderringThreadId setTargetTexResolution reset''',
    'HookCore': '''HookCore initGLHooks getEGLPlatformHooks setGLHooksThreadSpecific
        setEGLHooksThreadSpecific''',
    'HookManager': '''HookManager setEGLImpl getDefaultEGLPlatformImpl getEGLPlatformHooks
        setGLHooksThreadSpecific setEGLHooksThreadSpecific enableHooking disableHooking reset
        hookCore gEGLImpl default_platform''',
    'MonitorThread': '''MonitorThread start reset initGameInfo threadProc eventProcess
        parseprocessData''',
    'QoGPUVeskoModeImpl': '''~QoGPUVeskoModeImpl getEGLPlatformHooks init setGLHooksThreadSpecific
        isInWhiteList''',
}
WITH_VTABLE = ('Impl', 'DefaultImplV2', 'PUBGMHDImpl', 'GenshinImpactImpl', 'SGAMEImpl',
               'QoGPUVeskoModeImpl')
FREE = ('gameInfo', 'impl', 'setGLHooksThreadSpecific', 'setGlThreadSpecific')


def entries(path: str, macro: str) -> list[str]:
    with open(path, encoding='utf-8') as rows:
        return re.findall(rf'^{macro}(?:_64)?\(.*?, (\w+), \(', rows.read(), re.M)


def expected_symbols(source: str) -> set[str]:
    gl = entries(f'{source}/platform/gl_entries.in', 'GL_ENTRY')
    egl = entries(f'{source}/platform/egl_entries.in', 'EGL_ENTRY')
    assert (len(gl), len(egl)) == (1020, 80), 'the entry lists are not what this test reads'
    symbols = {'createImplInstance', 'destroyImplInstance'}
    symbols.update(f'{name}_hook' for name in gl)
    symbols.update(f'android::{name}_hook' for name in egl)
    symbols.update(f'android::{name}' for name in FREE)
    for cls, members in CLASSES.items():
        for member in members.split():
            symbols.add(f'android::{cls}::{member}')
            if member == cls:
                symbols.add(f'android::{cls}::~{member}')
    symbols.update(f'android::Impl::{name}' for name in gl + egl)
    symbols.update(f'android::DefaultImplV2::{name}' for name in gl)
    symbols.update(f'vtable for android::{cls}' for cls in WITH_VTABLE)
    return symbols


def exported_symbols(library: str, nm: str) -> set[str]:
    lines = subprocess.run([nm, '-D', '-C', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    names = [line.split(' ', 2)[2] for line in lines]
    # Neither parameters nor "const" nor ABI tags say which symbol it is.
    return {re.sub(r'\(.*|\[abi:\w+\]|@.*', '', name) for name in names}


def detours(library: str, nm: str) -> list[str]:
    """Functions of the library itself that it calls through a linkage table."""
    relocations = subprocess.run(['readelf', '-rW', library], check=True, capture_output=True,
                                 text=True).stdout
    called = set(re.findall(r'JUMP_SLO\w*\s+\w+\s+(\w+)', relocations))
    if not called:
        sys.exit('readelf shows no calls to other libraries, which cannot be')
    lines = subprocess.run([nm, '-D', '--defined-only', library], check=True,
                           capture_output=True, text=True).stdout.splitlines()
    return sorted(called & {line.split()[-1] for line in lines})


def main() -> int:
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__.strip())
    expected = expected_symbols(sys.argv[2])
    nm = (sys.argv[3:] or ['nm'])[0]
    exported = exported_symbols(sys.argv[1], nm)
    for name in sorted(expected - exported):
        print(f'missing: {name}')
    for name in sorted(exported - expected):
        print(f'not part of the interface: {name}')
    own = detours(sys.argv[1], nm)
    for name in own:
        print(f'called through the dynamic linker: {name}')
    print(f'{len(exported)} exported, {len(expected)} expected')
    return 0 if exported == expected and not own else 1


if __name__ == '__main__':
    sys.exit(main())
