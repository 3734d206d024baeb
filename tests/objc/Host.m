#import "Host.h"

#include <stdatomic.h>

static atomic_long alive;

@implementation Host

- (instancetype)init {
    self = [super init];
    atomic_fetch_add(&alive, 1);
    return self;
}

- (void)dealloc {
    atomic_fetch_sub(&alive, 1);
    [super dealloc];
}

+ (NSInteger)alive {
    return atomic_load(&alive);
}

+ (BOOL)waitUntilNoneIsAlive {
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:30];
    while ([Host alive] > 0 && [limit timeIntervalSinceNow] > 0) {
        [NSThread sleepForTimeInterval:0.001];
    }
    return [Host alive] == 0;
}

+ (KivoCompletion)completionThatCalls:(KivoCompletion)answer {
    Host* const captured = [[Host new] autorelease];
    return [[^(ObjCResult* result) {
        answer([Host alive] > 0 && captured ? result : nil);
    } copy] autorelease];
}

+ (AcquisitionConfig*)config {
    return [[[AcquisitionConfig alloc] initWithEnviroment:SDKEnvTEST
                                         kivo_app_doclist:@"PASSPORT"
                                        kivo_expire_grace:@"P6M"
                                       kivo_facematch_min:@"0.8"
                                         kivo_doc_issuers:@"UTO"
                                              kivo_images:@"face"] autorelease];
}

@end

@implementation StartScreen

@synthesize events;

- (instancetype)init {
    self = [super init];
    events = [NSMutableArray new];
    session = [[KivoSDK loadForProviderWithKey:@"K" version:@"18"] retain];
    return self;
}

- (void)viewDidLoad {
    [events addObject:@"didLoad"];
    KivoButton* const button = [[KivoButton new] autorelease];
    button.title = @"Open an account";
    button.frame = NSMakeRect(24, 200, 342, 50);
    // Not retained by the block, because the screen's view keeps the block.
    __block StartScreen* const screen = self;
    [button addTapAction:^{
        [screen askForCode];
    }];
    [self.view addSubview:button];
}

- (void)askForCode {
    __block StartScreen* const screen = self;
    [session setContextWithViewController:self];
    [session acquireWithAcquisitionObject:AcquisitionObjectActivationCode
                                   config:nil
                                 response:^(ObjCResult* result) {
                                     [screen->events addObject:result.success.data];
                                     [screen.navigationController popToViewController:screen];
                                     [screen->session setContextWithViewController:nil];
                                 }];
}

- (void)viewWillAppear:(BOOL)animated {
    [events addObject:@"willAppear"];
}

- (void)viewDidAppear:(BOOL)animated {
    [events addObject:@"didAppear"];
}

- (void)viewWillDisappear:(BOOL)animated {
    [events addObject:@"willDisappear"];
}

- (void)viewDidDisappear:(BOOL)animated {
    [events addObject:@"didDisappear"];
    [NSException raise:NSGenericException format:@"goes no further"];
}

- (void)dealloc {
    [events release];
    [session release];
    [super dealloc];
}

@end
