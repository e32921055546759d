# Checks that the built library exports its functions under their plain names.
set(expected
  CancelPrintJob
  CreateDataCollectionFromDOM
  CreateDataCollectionFromDataMapSpecsCollection
  CreateDataCollectionFromFile
  CreateDataCollectionFromXML
  CreateIPPPrintProvider
  CreateIPPProvider
  CreateIPPRequest
  CreateIPPResponse
  CreateSecureIPPPrintProvider
  CreateOIDProvider
  CreatePrintDataCacheProvider
  CreateQUARNProvider
  CreateRegCacheProvider
  CreateWSProvider
  ReviewPrintDataCache
  ReviewRegCache
  SetTraceSink)
if(LIBRARY MATCHES "\\.dll$")
  execute_process(COMMAND ${OBJDUMP} -p ${LIBRARY} OUTPUT_VARIABLE names RESULT_VARIABLE failed)
else()
  execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE names RESULT_VARIABLE failed)
endif()
if(failed)
  message(FATAL_ERROR "cannot list the exports of ${LIBRARY}")
endif()
foreach(name ${expected})
  if(NOT names MATCHES "[ \t]${name}[\r\n]")
    message(FATAL_ERROR "${LIBRARY} does not export ${name}")
  endif()
endforeach()
