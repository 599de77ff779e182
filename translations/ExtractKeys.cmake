cmake_minimum_required(VERSION 3.24)
# Writes OUT, a C++ file that names every text looked up with kkTr("...") in SOURCES, and
# every text marked QT_TRANSLATE_NOOP("KextKeeper", "...") for a later kkTr(), as
# QT_TRANSLATE_NOOP("KextKeeper", "..."), so that lupdate, which cannot see through the
# helper and reads only the window's sources, finds them in the context kkTr() uses.
# cmake -DOUT=keys.cpp -DSOURCE_LIST=file-naming-the-sources -P ExtractKeys.cmake
set(out "// Written by translations/ExtractKeys.cmake for lupdate; not compiled.\n")
file(STRINGS "${SOURCE_LIST}" sources)
foreach(marker "kkTr(" "QT_TRANSLATE_NOOP(\"KextKeeper\",")
  string(LENGTH "${marker}" marker_length)
  foreach(source IN LISTS sources)
    file(READ "${source}" text)
    while(TRUE)
      string(FIND "${text}" "${marker}" at)
      if(at EQUAL -1)
        break()
      endif()
      math(EXPR at "${at} + ${marker_length}")
      string(SUBSTRING "${text}" ${at} -1 text)
      # The literal, or adjacent literals across lines; a variable is skipped (its texts
      # are marked where they are written).
      set(literal "")
      while(TRUE)
        string(REGEX MATCH "^[ \t\r\n]*\"([^\"\\\\]|\\\\.)*\"" match "${text}")
        if(NOT match)
          break()
        endif()
        string(STRIP "${match}" piece)
        string(APPEND literal " ${piece}")
        string(LENGTH "${match}" length)
        string(SUBSTRING "${text}" ${length} -1 text)
      endwhile()
      if(NOT literal STREQUAL "")
        string(APPEND out "QT_TRANSLATE_NOOP(\"KextKeeper\",${literal});\n")
      endif()
    endwhile()
  endforeach()
endforeach()
file(WRITE "${OUT}" "${out}")
