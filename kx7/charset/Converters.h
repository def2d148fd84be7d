// kx7text - the converter objects of the library, one a character set.
//
// They may be called directly; KX7CharSetConverter::getConverter finds them by character set. They live from the
// loading of the library to its unloading.
#ifndef KX7_CHARSET_CONVERTERS_H
#define KX7_CHARSET_CONVERTERS_H

#include "kx7/base/Export.h"
#include "kx7/converters/KX7CharSetConverterDBCS.h"
#include "kx7/converters/KX7CharSetConverterDBCSEx.h"
#include "kx7/converters/KX7CharSetConverterEUC_CN_KR.h"
#include "kx7/converters/KX7CharSetConverterEUC_JP.h"
#include "kx7/converters/KX7CharSetConverterGB18030.h"
#include "kx7/converters/KX7CharSetConverterSBCS.h"
#include "kx7/converters/KX7CharSetConverterUTF16.h"
#include "kx7/converters/KX7CharSetConverterUTF16Esc.h"
#include "kx7/converters/KX7CharSetConverterUTF32.h"
#include "kx7/converters/KX7CharSetConverterUTF8.h"

/** Each is named after its character set. */
///@{
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1250;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1251;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1252;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1253;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1254;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1255;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1256;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1257;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP1258;
extern KX7_API KX7CharSetConverterSBCS g_oConverterWCP874;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_1;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_2;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_3;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_4;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_5;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_6;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_7;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_8;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_9;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_10;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_11;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_13;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_14;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_15;
extern KX7_API KX7CharSetConverterSBCS g_oConverterISO_8859_16;
extern KX7_API KX7CharSetConverterSBCS g_oConverterKOI8R;
extern KX7_API KX7CharSetConverterDBCS g_oConverterWCP932;
extern KX7_API KX7CharSetConverterDBCS g_oConverterWCP936;
extern KX7_API KX7CharSetConverterDBCS g_oConverterWCP949;
extern KX7_API KX7CharSetConverterDBCS g_oConverterWCP950;
extern KX7_API KX7CharSetConverterGB18030 g_oConverterGB18030;
extern KX7_API KX7CharSetConverterDBCS g_oConverterBig5;
extern KX7_API KX7CharSetConverterDBCS g_oConverterSHIFTJIS;
extern KX7_API KX7CharSetConverterDBCSEx g_oConverterSJIS2004;
extern KX7_API KX7CharSetConverterEUC_CN_KR g_oConverterEUCKR;
extern KX7_API KX7CharSetConverterEUC_CN_KR g_oConverterEUCCN;
extern KX7_API KX7CharSetConverterEUC_JP g_oConverterEUCJP;
extern KX7_API KX7CharSetConverterUTF8 g_oConverterUTF8;
extern KX7_API KX7CharSetConverterUTF16 g_oConverterUTF16;
extern KX7_API KX7CharSetConverterUTF32 g_oConverterUTF32;
extern KX7_API KX7CharSetConverterUTF16Esc g_oConverterUTF16Esc;
///@}

#endif
