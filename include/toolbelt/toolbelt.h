// Toolbelt, whole: everything that a program may ask of toolbelt.dll. Include this, or one of the headers below alone.
//
// Classes and functions with C++ names are for programs of the same compiler family as the DLL, g++ of mingw-w64 for
// i686 (C++20): layouts of classes, virtual tables and names differ elsewhere. Everybody else takes toolbelt_c.h.
//
// What is marked TB_API is exported. Declarations without the mark are what the marked ones are made of: their types
// may be used, their functions are the library's own. Key objects and digests come from factories; a program derives
// from cHashAlg, cSymAlg, cPKA, ProgressSink, CDll, CSysDll and the dialog classes, and from no other.
//
// Nothing throws. Failure is a return value: 0 is success, and each layer names its codes in a header of its own.
//
// Process-wide switches, all of them setters with a stated default: setDefaultAlphabet, setRandomPool, setDebugChannel,
// setAssertionReport, setMessageBoxFunction, setResourceLibrary, setReleaseSystemLibraries, setImageLibrary,
// setNoColours, setPostsStopped, and cpu::limitFeatures for the processor's instructions that are used.
#pragma once

#include "crypto/base/cpu.h"
#include "crypto/base/heap.h"

#include "crypto/bignum/bignum.h"
#include "crypto/bignum/modular.h"
#include "crypto/bignum/primes.h"

#include "crypto/hash/hash.h"

#include "crypto/cipher/cipher.h"

#include "crypto/pka/dsa.h"
#include "crypto/pka/elgamal.h"
#include "crypto/pka/pka.h"
#include "crypto/pka/pkcs1.h"
#include "crypto/pka/random_pool.h"
#include "crypto/pka/rsa.h"
#include "crypto/pka/rsa_generate.h"

#include "crypto/encoding/armour.h"
#include "crypto/encoding/base64.h"
#include "crypto/encoding/byte_buffer.h"
#include "crypto/encoding/crc24.h"
#include "crypto/encoding/der.h"
#include "crypto/encoding/key_text.h"
#include "crypto/encoding/key_write.h"
#include "crypto/encoding/oid_table.h"
#include "crypto/encoding/x509.h"

#include "Includes/stringFuncs/conversion.h"
#include "Includes/stringFuncs/diagnostics.h"
#include "Includes/stringFuncs/file_name.h"
#include "Includes/stringFuncs/file_view.h"
#include "Includes/stringFuncs/formatter.h"
#include "Includes/stringFuncs/long_name.h"
#include "Includes/stringFuncs/mbstr.h"
#include "Includes/stringFuncs/string_array.h"
#include "Includes/stringFuncs/string_buffer.h"
#include "Includes/stringFuncs/text_decode.h"
#include "Includes/stringFuncs/text_file.h"
#include "Includes/stringFuncs/wcs.h"

#include "Includes/system/advapi_dll.h"
#include "Includes/system/dll.h"
#include "Includes/system/file_version.h"
#include "Includes/system/mail_link.h"
#include "Includes/system/mapi_mail.h"
#include "Includes/system/message_box.h"
#include "Includes/system/missing_function.h"
#include "Includes/system/percent_encode.h"
#include "Includes/system/powershell.h"
#include "Includes/system/resource_library.h"
#include "Includes/system/shell32_dll.h"
#include "Includes/system/static_object.h"
#include "Includes/system/sys_dll.h"
#include "Includes/system/system_description.h"
#include "Includes/system/traced_lock.h"
#include "Includes/system/wow64.h"

#include "Includes/cDlg/colored_dlg.h"
#include "Includes/cDlg/countdown.h"
#include "Includes/cDlg/dialog_drawing.h"
#include "Includes/cDlg/dlg.h"
#include "Includes/cDlg/fonts.h"
#include "Includes/cDlg/gradient.h"

#include "json/json_parse.h"
#include "json/json_value.h"
#include "json/json_write.h"

#include "net/post_json.h"
#include "net/split_url.h"
