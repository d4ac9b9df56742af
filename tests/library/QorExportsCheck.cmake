# Checks that the shared library exports its public API and nothing of its internals:
# every dynamic symbol it defines must belong to an exported class or function (or be a
# standard-library instantiation, a linker symbol or a sanitizer's marker).
# Run as: cmake -DLIBRARY=<path> -P QorExportsCheck.cmake
execute_process(COMMAND nm -D --defined-only -C ${LIBRARY} OUTPUT_VARIABLE listing RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
set(exported QorFindShaderFile QorShaderManager QorShaderTexture QorShaderIncludeManager QorShaderEffect
  QorIShader QorIShaderEffect QorIShaderParameters QorIShaderValue QorNvFXEffect QorNvFXShaderParameters
  QorNvFXShaderValue QorNvFXShaderValueFloat QorNvFXShaderValueColor QorNvFXShaderValueString
  QorShaderQRFXMigration QorShaderMigrationReport QorShaderFactory QorShaderTextureRegistry QorMaterialValue QorMaterialParameters QorMaterialEffect
  QorCgFXTranslator QorCgFXTranslation)
set(required "QorShaderFactory::CreateShader" "QorShaderTextureRegistry::AddShaderTexture"
  "QorShaderEffect::AddShaderEffect" "QorShaderIncludeManager::Instance" "typeinfo for QorIShader\n")
string(REPLACE "\n" ";" lines "${listing}")
set(leaks)
foreach(line IN LISTS lines)
  string(REGEX REPLACE "^[0-9a-f]+ [A-Za-z] " "" symbol "${line}")
  # Linker symbols, standard-library instantiations and the sanitizers' own markers.
  if(symbol STREQUAL "" OR symbol MATCHES "^(_init|_fini|_edata|_end|__bss_start)$" OR symbol MATCHES "std::"
     OR symbol MATCHES "^__(odr_asan|asan|ubsan|sanitizer)")
    continue()
  endif()
  set(known FALSE)
  foreach(name IN LISTS exported)
    if(symbol MATCHES "(^| )${name}(::|\\(|$)")
      set(known TRUE)
    endif()
  endforeach()
  if(NOT known)
    list(APPEND leaks "${symbol}")
  endif()
endforeach()
if(leaks)
  string(REPLACE ";" "\n  " leaks "${leaks}")
  message(FATAL_ERROR "internal symbols exported by ${LIBRARY}:\n  ${leaks}")
endif()
foreach(pattern IN LISTS required)
  string(REGEX MATCH "${pattern}" found "${listing}")
  if(NOT found)
    message(FATAL_ERROR "${LIBRARY} does not export ${pattern}")
  endif()
endforeach()
