select FPreLetter, FSufLetter, FCurNo = isNull(FCurNo, 0) + 1, FFormat
from ICBillNo WITH(UPDLOCK) where FBillID = 53